#pragma once

#include <string_view>

namespace ox::vcard {

// Entries of an address dictionary beside the public ones: the first two components of ADR (RFC
// 6350, section 6.3.1) exactly as the card gave them. They also stand as the first lines of the
// street, where a reader of the record sees them; a writer takes them off there again.
inline constexpr std::string_view kAddressPostOfficeBoxKey = "POBox";
inline constexpr std::string_view kAddressExtendedKey = "Extended";

}  // namespace ox::vcard
