#pragma once

#include <string_view>

#include "ox/vcard/values/card_draft.hpp"

namespace ox::vcard {

// Entries of an address dictionary beside the public ones.

// The first two components of ADR (RFC
// 6350, section 6.3.1) exactly as the card gave them. They also stand as the first lines of the
// street, where a reader of the record sees them; a writer takes them off there again.
inline constexpr std::string_view kAddressPostOfficeBoxKey = "POBox";
inline constexpr std::string_view kAddressExtendedKey = "Extended";

// The formatted text of the address: LABEL, a property of its own in 3.0 (RFC 2426, section 3.2.2)
// and a parameter of ADR in 4.0 (RFC 6350, section 6.3.1). An address that is edited has none.
inline constexpr std::string_view kAddressLabelKey = "Label";

// Once all lines are read: LABEL joins the address that it belongs to, which its group or its TYPE
// tells; without one it is an address of which nothing else is known.
void settleAddressLabels(CardDraft& draft);

}  // namespace ox::vcard
