#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/cards/lines/text_lines.hpp"

namespace ox::sync {

// A line of a card, with those that share its group: what is kept or written anew as one.
struct CardUnit {
  std::vector<std::size_t> lines;  // places in the list of lines
  std::string name;                // of its first line that is no label of another, upper case
  std::string group;               // as the text has it; empty without one
  std::string said;                // unfolded, whatever the name of the group
};

// All units but the frame of the card, what tells of the card alone (UID, REV, PRODID) and the
// members of a group.
std::vector<CardUnit> unitsOf(const std::vector<TextLine>& lines);

// The units that our writer makes of a unit alone.
std::vector<std::string> rewritten(const CardUnit& unit, const std::vector<TextLine>& lines,
                                   bool isGroup, vcard::CardVersion version);

}  // namespace ox::sync
