#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// RFC 4648 section 4, padded, without line breaks.
OX_EXPORT std::string base64(std::string_view bytes);

// Reads exactly what base64() writes; missing for any other text: a foreign character, wrong or no
// padding, bits that are left over and not zero.
OX_EXPORT std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace ox
