#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "ox/sync/cards/card_content.hpp"
#include "ox/sync/cards/lines/card_units.hpp"
#include "ox/sync/cards/lines/text_lines.hpp"

namespace ox::sync {

// Which lines make room for others: those that say what is to change, or all that have the name of
// one of them.
enum class EditScope : std::uint8_t { ChangedLines, ChangedNames };

// The lines of a text with those of its properties replaced that another content says otherwise.
// Borrows the lines.
class EditedLines {
 public:
  // `now` is what the lines say.
  EditedLines(const std::vector<TextLine>& lines, const ReadCard& now, const CardContent& wanted,
              EditScope scope);

  // REV (RFC 6350, section 6.7.4) in the form that the one of the text has.
  void setRevision(std::string_view revision);
  // Unless the text has one.
  void setUid(std::string_view uid);

  std::string text() const;

 private:
  void replaceUnits(const CardContent& wanted, EditScope scope);
  std::vector<std::size_t> leavingUnits(const std::vector<CardUnit>& going,
                                        std::vector<CardUnit>& coming,
                                        const std::vector<CardUnit>& wanted);
  void place(const CardUnit& unit, const std::vector<TextLine>& from);
  void editMembers(const CardContent& wanted);
  void completeNames(const CardContent& wanted);
  std::size_t placeFor(const std::string& name) const;
  std::string groupFor(const CardUnit& unit, const std::string& left);

  const std::vector<TextLine>& lines_;
  const ReadCard& now_;
  std::vector<CardUnit> units_;
  std::vector<bool> isGone_;                              // of each line
  std::vector<std::string> before_;                       // of each line, what is new before it
  std::map<std::string, std::vector<std::size_t>> left_;  // units that made room, by name
  std::set<std::string> takenGroups_;
  std::size_t nextItem_ = 1;
};

}  // namespace ox::sync
