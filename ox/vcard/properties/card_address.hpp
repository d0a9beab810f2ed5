#pragma once

#include <string_view>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/values/card_draft.hpp"

namespace ox::vcard {

// Entries of an address dictionary beside the public ones.

// The first two components of ADR (RFC
// 6350, section 6.3.1) exactly as the card gave them. They also stand as the first lines of the
// street, where a reader of the record sees them; a writer takes them off there again.
inline constexpr std::string_view kAddressPostOfficeBoxKey = "POBox";
inline constexpr std::string_view kAddressExtendedKey = "Extended";

// Once all lines are read: LABEL joins the address that it belongs to, which its group or its TYPE
// tells; without one it is an address of which nothing else is known.
void settleAddressLabels(CardDraft& draft);

}  // namespace ox::vcard
