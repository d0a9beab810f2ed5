#include "ox/formats/json/contact_lines.hpp"

#include "ox/formats/json/contact_rows.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::formats {
namespace {

using vcard::ContentLine;
using vcard::isSameWord;
using vcard::isWord;

constexpr std::string_view kLabel = "X-ABLABEL";
constexpr std::string_view kCountry = "X-ABADR";

bool isGroupLine(const ContentLine& line) {
  return isWord(line.name, kLabel) || isWord(line.name, kCountry);
}

bool isInGroupOf(const ContentLine& line, const ContentLine& other) {
  return !line.group.empty() && isSameWord(line.group, other.group);
}

// "Mother" of a built-in label.
std::string plainLabel(const std::string& label) {
  constexpr std::string_view kFront = "_$!<";
  constexpr std::string_view kBack = ">!$_";
  const bool isBuiltIn = label.size() > kFront.size() + kBack.size() && label.starts_with(kFront) &&
                         label.ends_with(kBack);
  return isBuiltIn ? label.substr(kFront.size(), label.size() - kFront.size() - kBack.size())
                   : label;
}

}  // namespace

ContactLines::ContactLines(const WrittenCard& card) : card_(card), places_(card.lines().size()) {
  for (std::size_t i = 0; i < lines().size(); ++i) {
    const auto* row = findContactRow(lines()[i].name);
    if (row == nullptr) continue;
    if (row->accepts == nullptr || row->accepts(*this, lines()[i])) places_[i].row = row;
  }
  for (std::size_t i = 0; i < lines().size(); ++i) {
    if (isGroupLine(lines()[i])) placeGroupLine(i);
  }
}

// A label has its place when every object of its group can say it, a country code in its address.
void ContactLines::placeGroupLine(std::size_t index) {
  const auto& line = lines()[index];
  const bool isLabel = isWord(line.name, kLabel);
  std::size_t entries = 0;
  for (std::size_t i = 0; i < lines().size(); ++i) {
    if (!isInGroupOf(line, lines()[i]) || isGroupLine(lines()[i])) continue;
    const auto* row = places_[i].row;
    const bool says = row != nullptr && (isLabel ? row->label == ContactRow::Label::Has
                                                 : isWord(lines()[i].name, "ADR"));
    if (!says) return;
    ++entries;
  }
  places_[index].isOfGroup = entries > 0 && ofGroup(line, line.name) == &line;
}

// The last one counts.
const ContentLine* ContactLines::ofGroup(const ContentLine& line, std::string_view name) const {
  const ContentLine* found = nullptr;
  for (const auto& other : lines()) {
    if (isInGroupOf(line, other) && isSameWord(other.name, name)) found = &other;
  }
  return found;
}

std::size_t ContactLines::indexOf(const ContentLine& line) const {
  return static_cast<std::size_t>(&line - lines().data());
}

const ContactRow* ContactLines::rowOf(const ContentLine& line) const {
  return places_[indexOf(line)].row;
}

const ContentLine* ContactLines::placed(std::string_view name) const {
  for (const auto& line : lines()) {
    if (isWord(line.name, name) && rowOf(line) != nullptr) return &line;
  }
  return nullptr;
}

std::string ContactLines::labelOf(const ContentLine& line) const {
  const auto* label = ofGroup(line, kLabel);
  if (label == nullptr || !places_[indexOf(*label)].isOfGroup) return {};
  return plainLabel(textOf(label->value));
}

std::string ContactLines::countryOf(const ContentLine& line) const {
  const auto* country = ofGroup(line, kCountry);
  return country != nullptr ? textOf(country->value) : std::string();
}

bool ContactLines::isLeft(const ContentLine& line) const {
  const auto& place = places_[indexOf(line)];
  return place.row == nullptr && !place.isOfGroup;
}

bool ContactLines::needsGroup(const ContentLine& line) const {
  for (const auto& other : lines()) {
    if (!isInGroupOf(line, other) || &other == &line) continue;
    if (!isGroupLine(other) || isLeft(other)) return true;
  }
  return false;
}

}  // namespace ox::formats
