#pragma once

#include <string>

#include "ox/sync/cards/card_content.hpp"

namespace ox::sync {

// A card as our exports write it, but for what belongs to one card alone: without UID, REV, PRODID
// and members.
std::string writtenValues(const CardContent& content, vcard::CardVersion version);

// Without control characters that no server takes: all but tabs and line ends.
std::string withoutControls(std::string_view text);

}  // namespace ox::sync
