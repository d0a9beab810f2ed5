#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ox::sync {

// One content line of a text: the physical lines that it takes, with their line ends, and what
// they say unfolded. A nested card is of the AGENT line before it, and what is no line of its own
// of the one before it.
struct TextLine {
  std::string bytes;
  std::string unfolded;  // without its group
  std::string group;     // as the text has it; empty without one
  std::string name;      // in upper case
};

// The lines of the first card of the text, BEGIN and END among them.
std::vector<TextLine> linesOf(std::string_view text);

// The value of the first line of that name, trimmed; empty without one.
std::string_view valueOf(const std::vector<TextLine>& lines, std::string_view name);

}  // namespace ox::sync
