#include "ox/sync/cards/lines/card_units.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>

#include "ox/sync/cards/lines/fresh_card.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::sync {
namespace {

using namespace std::string_view_literals;

constexpr std::array kFrame = {"BEGIN"sv,   "END"sv,
                               "VERSION"sv, "UID"sv,
                               "REV"sv,     "PRODID"sv,
                               "KIND"sv,    "X-ADDRESSBOOKSERVER-KIND"sv,
                               "MEMBER"sv,  "X-ADDRESSBOOKSERVER-MEMBER"sv};

bool isOfFrame(const std::string& name) {
  return std::find(kFrame.begin(), kFrame.end(), name) != kFrame.end();
}

bool isNote(const std::string& name) {
  return name == "X-ABLABEL" || name == "X-ABADR";
}

}  // namespace

std::vector<CardUnit> unitsOf(const std::vector<TextLine>& lines) {
  std::vector<CardUnit> units;
  std::unordered_map<std::string, std::size_t> byGroup;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const auto& line = lines[i];
    if (isOfFrame(line.name)) continue;
    auto place = units.size();
    if (!line.group.empty()) {
      place = byGroup.emplace(vcard::groupKey(line.group), place).first->second;
    }
    if (place == units.size()) units.push_back({{}, {}, line.group, {}});
    auto& unit = units[place];
    unit.lines.push_back(i);
    if (unit.name.empty() || (isNote(unit.name) && !isNote(line.name))) unit.name = line.name;
    if (!unit.said.empty()) unit.said += '\n';
    if (!line.group.empty()) unit.said += '.';
    unit.said += line.unfolded;
  }
  return units;
}

std::vector<std::string> rewritten(const CardUnit& unit, const std::vector<TextLine>& lines,
                                   bool isGroup, vcard::CardVersion version) {
  std::string card = "BEGIN:VCARD\r\n";
  card += version == vcard::CardVersion::V40 ? "VERSION:4.0\r\n" : "VERSION:3.0\r\n";
  if (isGroup) card += "X-ADDRESSBOOKSERVER-KIND:group\r\n";
  for (const auto place : unit.lines) card += lines[place].bytes;
  card += "END:VCARD\r\n";
  const auto read = readCard(card);
  const auto* whole = std::get_if<ReadCard>(&read);
  if (whole == nullptr) return {};
  std::vector<std::string> said;
  for (auto& each : unitsOf(linesOf(writtenValues(whole->content, version)))) {
    // Every card has a name.
    const bool isName = each.name == "N" || each.name == "FN";
    if (!isName || each.name == unit.name) said.push_back(std::move(each.said));
  }
  return said;
}

}  // namespace ox::sync
