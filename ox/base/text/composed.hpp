#pragma once

#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// The text in NFC, so that an accented letter is the same however it was typed; a text that cannot
// be composed comes back as it is.
OX_EXPORT std::string composed(std::string_view text);

}  // namespace ox
