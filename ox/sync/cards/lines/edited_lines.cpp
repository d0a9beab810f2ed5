#include "ox/sync/cards/lines/edited_lines.hpp"

#include <algorithm>
#include <charconv>
#include <set>
#include <unordered_map>
#include <utility>

#include "ox/base/uuid.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/sync/cards/lines/fresh_card.hpp"
#include "ox/sync/cards/lines/member_lines.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/line_writer.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::sync {
namespace {

// The units that only the first list has, as often as it has them more often.
std::vector<CardUnit> unitsWithout(const std::vector<CardUnit>& units,
                                   const std::vector<CardUnit>& others) {
  std::unordered_map<std::string, std::size_t> counts;
  for (const auto& other : others) ++counts[other.said];
  std::vector<CardUnit> rest;
  for (const auto& unit : units) {
    const auto known = counts.find(unit.said);
    if (known != counts.end() && known->second > 0) {
      --known->second;
    } else {
      rest.push_back(unit);
    }
  }
  return rest;
}

// Those that name entries by their places, which an edit moves.
void dropKnownDetails(std::vector<CardUnit>& coming, const std::vector<CardUnit>& going) {
  const auto isWrapped = [](const CardUnit& unit) { return unit.name == "X-OX-LINE"; };
  // ";16#2;PREF=3" without the place, percent-escaped.
  const auto withoutPlace = [](std::string_view said) {
    const auto mark = said.find("%23");
    auto end = mark == std::string_view::npos ? mark : mark + 3;
    while (end < said.size() && vcard::isDigit(said[end])) ++end;
    if (mark == std::string_view::npos) return std::string(said);
    return std::string(said.substr(0, mark)).append(said.substr(end));
  };
  std::set<std::string> known;
  for (const auto& unit : going) {
    if (isWrapped(unit)) known.insert(withoutPlace(unit.said));
  }
  std::erase_if(coming, [&](const CardUnit& unit) {
    return isWrapped(unit) && known.contains(withoutPlace(unit.said));
  });
}

std::size_t itemNumber(std::string_view group) {
  constexpr std::string_view kItem = "ITEM";
  if (!vcard::startsWithWord(group, kItem)) return 0;
  group.remove_prefix(kItem.size());
  std::uint32_t number = 0;
  std::from_chars(group.data(), group.data() + group.size(), number);
  return number;
}

// 2026-11-23T06:07:00Z of 20261123T060700Z.
std::string extendedForm(std::string_view revision) {
  constexpr std::size_t kLength = 16;
  if (revision.size() != kLength) return std::string(revision);
  const auto part = [&](std::size_t from, std::size_t count) {
    return std::string(revision.substr(from, count));
  };
  return part(0, 4) + "-" + part(4, 2) + "-" + part(6, 2) + "T" + part(9, 2) + ":" + part(11, 2) +
         ":" + part(13, 2) + "Z";
}

}  // namespace

EditedLines::EditedLines(const std::vector<TextLine>& lines, const ReadCard& now,
                         const CardContent& wanted, EditScope scope)
    : lines_(lines),
      now_(now),
      units_(unitsOf(lines)),
      isGone_(lines.size()),
      before_(lines.size()) {
  for (const auto& line : lines) nextItem_ = std::max(nextItem_, itemNumber(line.group) + 1);
  replaceUnits(wanted, scope);
  if (wanted.isGroup) editMembers(wanted);
  completeNames(wanted);
}

void EditedLines::replaceUnits(const CardContent& wanted, EditScope scope) {
  const auto linesNow = linesOf(writtenValues(now_.content, now_.version));
  const auto linesThen = linesOf(writtenValues(wanted, now_.version));
  const auto unitsNow = unitsOf(linesNow);
  const auto unitsThen = unitsOf(linesThen);
  const auto going = unitsWithout(unitsNow, unitsThen);
  auto coming = unitsWithout(unitsThen, unitsNow);
  std::vector<std::size_t> leaving;
  if (scope == EditScope::ChangedLines) {
    const bool isOurs = std::any_of(units_.begin(), units_.end(),
                                    [](const CardUnit& unit) { return unit.name == "X-OX-LINE"; });
    if (!isOurs) dropKnownDetails(coming, going);
    leaving = leavingUnits(going, coming, unitsThen);
  } else {
    std::set<std::string> names;
    for (const auto& unit : going) names.insert(unit.name);
    for (const auto& unit : coming) names.insert(unit.name);
    coming.clear();
    for (const auto& unit : unitsThen) {
      if (names.contains(unit.name)) coming.push_back(unit);
    }
    for (std::size_t i = 0; i < units_.size(); ++i) {
      if (names.contains(units_[i].name)) leaving.push_back(i);
    }
  }
  for (const auto i : leaving) {
    for (const auto line : units_[i].lines) isGone_[line] = true;
    left_[units_[i].name].push_back(i);
  }
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    if (!isGone_[i] && !lines_[i].group.empty()) {
      takenGroups_.insert(vcard::groupKey(lines_[i].group));
    }
  }
  for (const auto& unit : coming) place(unit, linesThen);
}

// The units of the text that say what is to go. What they say besides comes again.
std::vector<std::size_t> EditedLines::leavingUnits(const std::vector<CardUnit>& going,
                                                   std::vector<CardUnit>& coming,
                                                   const std::vector<CardUnit>& wanted) {
  std::set<std::size_t> leaving;
  std::vector<std::vector<std::string>> said(units_.size());
  std::vector<bool> isKnown(units_.size());
  const auto saidBy = [&](std::size_t i) -> const std::vector<std::string>& {
    if (!isKnown[i]) {
      said[i] = rewritten(units_[i], lines_, now_.content.isGroup, now_.version);
      isKnown[i] = true;
    }
    return said[i];
  };
  const auto find = [&](auto&& says) {
    for (std::size_t i = 0; i < units_.size(); ++i) {
      if (!leaving.contains(i) && says(i)) return i;
    }
    return units_.size();
  };
  const auto comeAgain = [&](std::size_t left, const CardUnit& unit) {
    for (const auto& other : saidBy(left)) {
      if (other == unit.said) continue;
      const auto again = std::find_if(wanted.begin(), wanted.end(),
                                      [&](const CardUnit& each) { return each.said == other; });
      const bool comes = std::any_of(coming.begin(), coming.end(),
                                     [&](const CardUnit& each) { return each.said == other; });
      if (again != wanted.end() && !comes) coming.push_back(*again);
    }
  };
  for (const auto& unit : going) {
    const auto same = find([&](std::size_t i) { return units_[i].said == unit.said; });
    if (same != units_.size()) {
      leaving.insert(same);
      continue;
    }
    const auto saysIt = [&](std::size_t i) {
      const auto& all = saidBy(i);
      return std::find(all.begin(), all.end(), unit.said) != all.end();
    };
    auto other = find([&](std::size_t i) { return units_[i].name == unit.name && saysIt(i); });
    if (other == units_.size()) other = find(saysIt);
    if (other != units_.size()) {
      leaving.insert(other);
      comeAgain(other, unit);
      continue;
    }
    // It takes several of them to say it.
    for (std::size_t i = 0; i < units_.size(); ++i) {
      if (units_[i].name != unit.name || !leaving.insert(i).second) continue;
      comeAgain(i, unit);
    }
  }
  return {leaving.begin(), leaving.end()};
}

// Where one of that name has made room, else behind the last one, else at the end.
std::size_t EditedLines::placeFor(const std::string& name) const {
  for (std::size_t i = units_.size(); i-- > 0;) {
    if (units_[i].name == name) return units_[i].lines.back() + 1;
  }
  return lines_.size() - 1;
}

// The group that it has where that is free: unmodelled lines keep theirs. Else that of what made
// room for it.
std::string EditedLines::groupFor(const CardUnit& unit, const std::string& left) {
  if (unit.group.empty()) return {};
  auto group = unit.group;
  if (takenGroups_.contains(vcard::groupKey(group))) group = left;
  if (group.empty() || takenGroups_.contains(vcard::groupKey(group))) {
    group = "item" + std::to_string(nextItem_++);
  }
  takenGroups_.insert(vcard::groupKey(group));
  return group;
}

void EditedLines::place(const CardUnit& unit, const std::vector<TextLine>& from) {
  std::size_t at = lines_.size();
  std::string left;
  auto& room = left_[unit.name];
  if (!room.empty()) {
    at = units_[room.front()].lines.front();
    left = units_[room.front()].group;
    room.erase(room.begin());
  } else {
    at = placeFor(unit.name);
  }
  const auto group = groupFor(unit, left);
  for (const auto line : unit.lines) {
    if (from[line].group.empty()) {
      before_[at] += from[line].bytes;
      continue;
    }
    std::string anew;
    vcard::LineWriter(anew).raw(group).raw(".").raw(from[line].unfolded).end();
    before_[at] += anew;
  }
}

void EditedLines::editMembers(const CardContent& wanted) {
  auto edit = memberEdit(lines_, now_.content.members, wanted.members, now_.version);
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    if (edit.isGone[i]) isGone_[i] = true;
  }
  for (const auto& line : edit.added) before_[edit.place] += line;
}

// Servers refuse cards without FN and N.
void EditedLines::completeNames(const CardContent& wanted) {
  const auto written = linesOf(writtenValues(wanted, now_.version));
  for (const std::string name : {"N", "FN"}) {
    const auto hasName = [&](const TextLine& line) { return line.name == name; };
    const bool isThere = std::any_of(lines_.begin(), lines_.end(), hasName);
    const auto comes = std::any_of(before_.begin(), before_.end(), [&](const std::string& added) {
      const auto lines = linesOf("BEGIN:VCARD\r\n" + added + "END:VCARD\r\n");
      return std::any_of(lines.begin(), lines.end(), hasName);
    });
    if (isThere || comes) continue;
    const auto line = std::find_if(written.begin(), written.end(), hasName);
    if (line != written.end()) before_.back() += line->bytes;
  }
}

void EditedLines::setRevision(std::string_view revision) {
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    const auto& line = lines_[i];
    if (line.name != "REV") continue;
    const auto colon = line.unfolded.find(':');
    const auto head = std::string_view(line.unfolded).substr(0, colon);
    const auto value = std::string_view(line.unfolded).substr(colon + 1);
    const bool isExtended = value.size() > 4 && value[4] == '-';
    // A parameter may say that the old one was of another form.
    const auto name = head.substr(0, head.find(';'));
    std::string anew;
    vcard::LineWriter writer(anew);
    if (!line.group.empty()) writer.raw(line.group).raw(".");
    writer.raw(name).raw(":");
    writer.raw(isExtended ? extendedForm(revision) : std::string(revision)).end();
    before_[i] += anew;
    isGone_[i] = true;
    return;
  }
  before_.back() += "REV:" + std::string(revision) + "\r\n";
}

void EditedLines::setUid(std::string_view uid) {
  const bool hasUid = std::any_of(lines_.begin(), lines_.end(),
                                  [](const TextLine& line) { return line.name == "UID"; });
  if (hasUid) return;
  CardContent content;
  content.properties.set(
      property_id::kCardUid,
      Object(uid.empty() ? std::string(kUrnPrefix) + uuidText(makeUuid()) : std::string(uid)));
  vcard::WriteOptions options;
  options.version = now_.version;
  for (const auto& line : linesOf(vcard::writeCard(content.properties, nullptr, options))) {
    if (line.name == "UID") before_.back() += line.bytes;
  }
}

std::string EditedLines::text() const {
  std::string text;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    text += before_[i];
    if (!isGone_[i]) text += lines_[i].bytes;
  }
  return text;
}

}  // namespace ox::sync
