#pragma once

#include <string_view>

// How the model and the store call the same thing. A name that no row has comes back unchanged;
// results are borrowed, from the tables or from the argument.

namespace ox::names {

std::string_view storeNameOf(std::string_view propertyName);
std::string_view propertyNameOf(std::string_view storeName);

// The word shown for a label key.
std::string_view labelWordOf(std::string_view labelKey);
// The built-in label key shown as that word, whatever its case and blanks.
std::string_view labelKeyOf(std::string_view word);

}  // namespace ox::names
