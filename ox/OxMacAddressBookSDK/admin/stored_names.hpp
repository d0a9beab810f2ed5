#pragma once

#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// What the model calls a property of the store, and shows for it; one that the model does not know
// keeps its name. For values that were read from the journal.
OX_EXPORT std::string propertyNameOfStored(std::string_view storeName);
OX_EXPORT std::string propertyTitleOfStored(std::string_view storeName);
// The word shown for a label key.
OX_EXPORT std::string labelTitleOfStored(std::string_view labelKey);

}  // namespace ox
