#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/vcard/lines/content_line.hpp"

namespace ox::formats {

// The content lines of one card as our writer of vCard 4.0 gives it, between BEGIN and END and
// without VERSION. The lines borrow from this.
class WrittenCard {
 public:
  explicit WrittenCard(std::string_view text);
  WrittenCard(const WrittenCard&) = delete;
  WrittenCard& operator=(const WrittenCard&) = delete;

  const std::vector<vcard::ContentLine>& lines() const { return lines_; }
  // The first line of that name, which is given in upper case; null without one.
  const vcard::ContentLine* find(std::string_view name) const;
  bool isGroup() const;

 private:
  void unfold(std::string_view text);

  std::string unfolded_;
  std::vector<vcard::ContentLine> lines_;
};

// The text that the value of a line, or a part of it, stands for.
std::string textOf(std::string_view value);

}  // namespace ox::formats
