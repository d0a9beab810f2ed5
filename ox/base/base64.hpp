#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ox {

// RFC 4648 section 4, padded, without line breaks.
std::string base64(std::string_view bytes);

// Reads exactly what base64() writes; missing for any other text: a foreign character, wrong or no
// padding, bits that are left over and not zero.
std::optional<std::string> bytesOfBase64(std::string_view text);

}  // namespace ox
