#include "ox/vcard/unmodelled/kept_texts.hpp"

#include <algorithm>
#include <charconv>
#include <utility>

#include "ox/base/base64.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

bool isControl(char c) {
  return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
}

bool isNameLetter(char c) {
  return isLetter(c) || isDigit(c) || c == '-';
}

// The length of the name at the front of the text.
std::size_t nameLength(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && isNameLetter(text[at])) ++at;
  return at;
}

struct Name {
  std::string_view group;
  std::string_view name;
  std::size_t end = 0;  // 0: the line starts with no name
};

Name nameOf(std::string_view line) {
  Name result;
  std::size_t length = nameLength(line);
  std::size_t start = 0;
  if (length > 0 && length < line.size() && line[length] == '.') {
    result.group = line.substr(0, length);
    start = length + 1;
    length = nameLength(line.substr(start));
  }
  if (length == 0) return {};
  result.name = line.substr(start, length);
  result.end = start + length;
  return result;
}

// The end of one parameter value: in quotes, or without anything that would need them. npos when it
// is neither.
std::size_t endOfValue(std::string_view text, std::size_t at) {
  constexpr auto npos = std::string_view::npos;
  if (at < text.size() && text[at] == '"') {
    const auto close = text.find('"', at + 1);
    if (close == npos) return npos;
    const auto inside = text.substr(at, close - at);
    return std::any_of(inside.begin(), inside.end(), isControl) ? npos : close + 1;
  }
  while (at < text.size() && text[at] != ',' && text[at] != ';' && text[at] != ':') {
    if (text[at] == '"' || isControl(text[at])) return npos;
    ++at;
  }
  return at;
}

// The end of the parameters at that place; npos when they are not well-formed.
std::size_t endOfParameters(std::string_view text, std::size_t at, CardVersion version) {
  constexpr auto npos = std::string_view::npos;
  while (at < text.size() && text[at] == ';') {
    const auto name = text.substr(at + 1, nameLength(text.substr(at + 1)));
    at += 1 + name.size();
    if (name.empty() || at == text.size() || text[at] != '=') return npos;
    if (version == CardVersion::V40 && (isWord(name, "ENCODING") || isWord(name, "CHARSET"))) {
      return npos;
    }
    do {
      at = endOfValue(text, at + 1);
      if (at == npos) return npos;
    } while (at < text.size() && text[at] == ',');
  }
  return at;
}

bool hasEncoding(std::string_view parameters) {
  constexpr std::string_view kEncoding = ";ENCODING=";
  for (; parameters.size() > kEncoding.size(); parameters.remove_prefix(1)) {
    if (startsWithWord(parameters, kEncoding)) return true;
  }
  return false;
}

bool byOwner(const KeptDetail& a, const KeptDetail& b) {
  return std::pair(a.property, a.entry) < std::pair(b.property, b.entry);
}

const KeptDetail* find(const std::vector<KeptDetail>& details, PropertyId property,
                       std::uint64_t entry) {
  const auto kept =
      std::lower_bound(details.begin(), details.end(), KeptDetail{property, entry, {}}, byOwner);
  if (kept == details.end() || kept->property != property || kept->entry != entry) return nullptr;
  return &*kept;
}

}  // namespace

KeptTexts::KeptTexts(const PropertyBag& properties) {
  const auto* held = properties.find(property_id::kUnmodelledLines);
  if (held == nullptr) return;
  const auto* single = std::get_if<Object>(held);
  const auto* texts = single != nullptr ? single->array() : nullptr;
  if (texts == nullptr) return;
  for (const auto& element : *texts) {
    const auto* text = element.text();
    if (text == nullptr || text->empty()) continue;
    if (const auto detail = readKeptDetail(*text)) {
      takeDetail(*detail);
      continue;
    }
    const auto name = nameOf(*text);
    if (fullNameLine_.empty() && isWord(name.name, "FN")) {
      fullNameLine_ = *text;
      continue;
    }
    lines_.emplace_back(*text);
    takeGroup(name.group);
  }
  for (auto* details : {&parameters_, &spellings_, &ranks_, &groups_}) {
    if (details->size() > 1) std::stable_sort(details->begin(), details->end(), byOwner);
  }
}

// Numbers of items that are taken.
void KeptTexts::takeGroup(std::string_view group) {
  constexpr std::string_view kItem = "ITEM";
  if (!startsWithWord(group, kItem)) return;
  const auto digits = group.substr(kItem.size());
  std::uint32_t number = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), number);
  firstFreeItem_ = std::max<std::size_t>(firstFreeItem_, std::size_t{number} + 1);
}

void KeptTexts::takeDetail(const KeptDetail& detail) {
  if (detail.isSortAs()) {
    sortAs_ = detail.said;
  } else if (detail.rank() != 0) {
    ranks_.push_back(detail);
  } else if (detail.isGroup()) {
    const auto group = detail.said.substr(1);
    if (group.empty() || nameLength(group) != group.size()) return;
    groups_.push_back(detail);
    takeGroup(group);
  } else {
    (detail.isSpelling() ? spellings_ : parameters_).push_back(detail);
  }
}

std::span<const KeptDetail> KeptTexts::parametersOf(PropertyId property,
                                                    std::uint64_t entry) const {
  const auto [first, last] = std::equal_range(parameters_.begin(), parameters_.end(),
                                              KeptDetail{property, entry, {}}, byOwner);
  return {first, last};
}

std::string_view KeptTexts::spellingOf(PropertyId property, std::uint64_t entry) const {
  const auto* kept = find(spellings_, property, entry);
  return kept != nullptr ? kept->said.substr(1) : std::string_view();
}

unsigned KeptTexts::rankOf(PropertyId property, std::uint64_t entry) const {
  const auto* kept = find(ranks_, property, entry);
  return kept != nullptr ? kept->rank() : 0;
}

std::string_view KeptTexts::groupOf(PropertyId property, std::uint64_t entry) const {
  const auto* kept = find(groups_, property, entry);
  return kept != nullptr ? kept->said.substr(1) : std::string_view();
}

std::string_view groupOfLine(std::string_view line) {
  return nameOf(line).group;
}

std::string_view nameOfLine(std::string_view line) {
  return nameOf(line).name;
}

bool isWellFormed(std::string_view line, CardVersion version) {
  const auto name = nameOf(line);
  if (name.end == 0) return false;
  const auto colon = endOfParameters(line, name.end, version);
  if (colon == std::string_view::npos || colon >= line.size() || line[colon] != ':') return false;
  const auto value = line.substr(colon + 1);
  if (hasEncoding(line.substr(name.end, colon - name.end))) return bytesOfBase64(value).has_value();
  return std::none_of(value.begin(), value.end(), isControl);
}

bool areAdmitted(std::string_view parameters, CardVersion version) {
  return endOfParameters(parameters, 0, version) == parameters.size();
}

}  // namespace ox::vcard
