#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "ox/vcard/card_version.hpp"

namespace ox::vcard {

struct LineRule;

// An unmodelled line on its way into a card. Borrows the text.
class UnmodelledLine {
 public:
  explicit UnmodelledLine(std::string_view text);

  std::string_view text() const { return text_; }
  // Without the group; empty when the line has none.
  std::string_view name() const { return name_; }
  // True for a property of which a card has one at most (RFC 6350, section 3.3).
  bool isOnlyOnce() const;
  // The line as it may stand in a card of that version beside what properties give: as it is, or
  // with its value in the form of the version, for which it borrows room. Missing when the version
  // cannot say it:
  //
  // - a name that the version does not know, or that properties give already;
  // - parameters that are not well-formed, base64 that is none;
  // - values of another form: a picture that is no URI, a REV without time in 4.0.
  std::optional<std::string_view> inVersion(CardVersion version, std::string& room) const;

 private:
  std::string_view text_;
  std::string_view name_;
  const LineRule* rule_;  // null: as it stands
};

}  // namespace ox::vcard
