#pragma once

#include <string>
#include <vector>

#include "ox/sync/cards/lines/text_lines.hpp"
#include "ox/vcard/card_version.hpp"

namespace ox::sync {

// Which lines of a group's card an edit of its members takes away, and which it adds. A member that
// stays keeps its lines, also where it has several.
struct MemberEdit {
  std::vector<bool> isGone;        // of each line of the text
  std::vector<std::string> added;  // whole lines
  std::size_t place = 0;           // the line that they stand before
};

// New members are spelled as the last one of the text that is spelled by UID, else as our exports
// do. The lists are UIDs as uidKey gives them.
MemberEdit memberEdit(const std::vector<TextLine>& lines, const std::vector<std::string>& said,
                      const std::vector<std::string>& wanted, vcard::CardVersion version);

}  // namespace ox::sync
