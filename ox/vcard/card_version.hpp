#pragma once

#include <cstdint>

namespace ox::vcard {

enum class CardVersion : std::uint8_t { V30, V40 };  // RFC 2426, RFC 6350

}  // namespace ox::vcard
