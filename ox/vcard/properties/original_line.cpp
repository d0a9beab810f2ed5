#include "ox/vcard/properties/original_line.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/properties/property_index.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::vcard {
namespace {

// As a detail holds it: the version that it came by, a mark, the line without its group.
constexpr char kOwnMark = '=';
constexpr char kRepeatedMark = '+';
constexpr std::size_t kLineAt = 2;

struct OriginalLine {
  bool is40 = false;
  bool isRepeated = false;
  std::string_view text;
};

std::optional<OriginalLine> originalLineOf(std::string_view detail) {
  if (detail.size() <= kLineAt) return std::nullopt;
  const OriginalLine line{detail[0] == '4', detail[1] == kRepeatedMark, detail.substr(kLineAt)};
  const bool isKnown = (detail[0] == '3' || detail[0] == '4') &&
                       (detail[1] == kOwnMark || detail[1] == kRepeatedMark);
  return isKnown ? std::optional(line) : std::nullopt;
}

bool isWrittenIn(const OriginalLine& line, CardVersion version) {
  if (!isWellFormed(line.text, version)) return false;
  if (version == CardVersion::V40) return line.is40;
  return !line.is40 || startsWithWord(line.text, "X-");
}

// What the line alone gives; false when it is none that a property reads.
bool readAlone(const OriginalLine& line, CardDraft& draft) {
  ContentLine content;
  const auto colon = parseHead(line.text, content);
  if (colon == std::string_view::npos) return false;
  content.value = line.text.substr(colon + 1);
  const auto* row = findProperty(content.name);
  draft.facts.is40 = line.is40;
  return row != nullptr && row->in == CardsWith::Persons && row->read(*row, content, draft);
}

// Whether the line gives the entry; its group may give the label.
struct Given {
  bool isSame = false;
  EntryWriter::TellsLabel tellsLabel = EntryWriter::TellsLabel::No;
};

Given given(const OriginalLine& line, const EntryWriter& entry) {
  using enum EntryWriter::TellsLabel;
  CardDraft draft;
  if (!readAlone(line, draft)) return {};
  const auto& read = draft.values.multi(entry.property());
  if (read.entries.size() != 1 || read.entries[0].value != entry.value()) return {};
  const auto& label = read.entries[0].label;
  const bool isSame = line.isRepeated || read.rank == entry.rank();
  if (label == entry.label()) return {isSame, Yes};
  const bool isPlainLabel = entry.label() && isPlain(*entry.label());
  return {isSame && !label && isPlainLabel, No};
}

bool writeLinesOfText(PropertyId property, std::string_view text, PropertyWriter& card,
                      Repeats repeats) {
  bool isWritten = false;
  for (const auto& detail : card.unmodelled().originalLinesOf(property, 0)) {
    const auto line = originalLineOf(detail.text);
    if (!line || line->isRepeated != (repeats == Repeats::Yes)) continue;
    if (!isWrittenIn(*line, card.version())) continue;
    CardDraft draft;
    if (!readAlone(*line, draft) || draft.values.text(property) != text) continue;
    card.line().raw(line->text).end();
    isWritten = true;
    if (repeats == Repeats::No) break;
  }
  return isWritten;
}

// What more entries than this say twice, nobody will ever read.
constexpr std::size_t kMostCompared = 256;

// Joins the entries of one property.
class RepeatedEntries {
 public:
  RepeatedEntries(PropertyId property, CardDraft& draft)
      : property_(property), held_(draft.values.multi(property)), draft_(draft) {}

  void join() {
    const auto count = held_.entries.size();
    if (count < 2 || count > kMostCompared) return;
    // From behind, so that the first one stays.
    for (std::size_t number = count; number >= 1; --number) {
      if (!hasLine(number) || isRanked(number)) continue;
      if (const auto other = equalOf(number); other != 0) joinTo(other, number);
    }
  }

 private:
  bool isOf(const PropertyDetail& detail, std::size_t number) const {
    return detail.property == property_ && detail.entry == number;
  }

  // One of its own, which it was read from.
  bool hasLine(std::size_t number) const {
    return std::ranges::any_of(draft_.unmodelled.details, [&](const PropertyDetail& each) {
      return isOf(each, number) && each.kind == DetailKind::Line && each.text[1] == kOwnMark;
    });
  }

  bool isRanked(std::size_t number) const {
    return std::ranges::any_of(held_.ranks,
                               [&](const auto& ranked) { return ranked.first == number; });
  }

  // The nearest before it, else the first behind it; 0 for none.
  std::size_t equalOf(std::size_t number) const {
    const auto isSame = [&](std::size_t other) {
      const auto& a = held_.entries[number - 1];
      const auto& b = held_.entries[other - 1];
      return a.label == b.label && a.value == b.value;
    };
    for (auto other = number - 1; other >= 1; --other) {
      if (isSame(other)) return other;
    }
    for (auto other = number + 1; other <= held_.entries.size(); ++other) {
      if (isSame(other)) return other;
    }
    return 0;
  }

  void joinTo(std::size_t other, std::size_t number) {
    auto& details = draft_.unmodelled.details;
    for (auto& each : details) {
      if (!isOf(each, number) || each.kind != DetailKind::Line) continue;
      each.entry = other;
      each.text[1] = kRepeatedMark;
    }
    std::erase_if(details, [&](const PropertyDetail& each) { return isOf(each, number); });
    for (auto& each : details) {
      if (each.property == property_ && each.entry > number) --each.entry;
    }
    for (auto& [entry, rank] : held_.ranks) {
      if (entry > number) --entry;
    }
    if (held_.primary > number) --held_.primary;
    held_.entries.erase(held_.entries.begin() + static_cast<std::ptrdiff_t>(number) - 1);
    for (std::size_t i = number - 1; i < held_.entries.size(); ++i) {
      held_.entries[i].identifier = i + 1;
    }
  }

  PropertyId property_;
  CollectedEntries& held_;
  CardDraft& draft_;
};

}  // namespace

void preserveOriginalLine(PropertyId property, const ContentLine& line, CardDraft& draft,
                          LineHolds holds, Repeats repeats) {
  const auto entry =
      property < property_id::kFirstMulti ? 0 : draft.values.multi(property).entries.size();
  auto text = line;
  const auto value = canonicalText(line.value);
  const bool isText = holds == LineHolds::Text && line.encoding != Encoding::Base64;
  if (isText) text.value = value;
  std::string preserved;
  appendPreserved(text, isText ? Dialect::V30 : draft.facts.dialect, preserved);
  const auto group = lineNameOf(preserved).group;
  if (!group.empty()) preserved.erase(0, group.size() + 1);
  preserved.insert(
      0, {draft.facts.is40 ? '4' : '3', repeats == Repeats::Yes ? kRepeatedMark : kOwnMark});
  draft.unmodelled.details.push_back({property, entry, DetailKind::Line, std::move(preserved)});
}

void joinRepeatedEntries(CardDraft& draft) {
  const auto isLine = [](const PropertyDetail& each) { return each.kind == DetailKind::Line; };
  if (std::ranges::none_of(draft.unmodelled.details, isLine)) return;
  for (PropertyId id = property_id::kFirstMulti; id <= property_id::kLastMulti; ++id) {
    // What is stored beside the lines has as many entries as they have.
    const bool isStored = draft.storedValues && draft.storedValues->find(id) != nullptr;
    if (!isStored) RepeatedEntries(id, draft).join();
  }
}

bool writeOriginalLine(EntryWriter& entry) {
  for (const auto& detail : entry.originalLines()) {
    const auto line = originalLineOf(detail.text);
    if (!line || line->isRepeated || !isWrittenIn(*line, entry.card().version())) continue;
    const auto [isSame, tellsLabel] = given(*line, entry);
    if (!isSame) continue;
    entry.writeLine(line->text, tellsLabel);
    return true;
  }
  return false;
}

void writeRepeatedLines(EntryWriter& entry) {
  for (const auto& detail : entry.originalLines()) {
    const auto line = originalLineOf(detail.text);
    if (!line || !line->isRepeated || !isWrittenIn(*line, entry.card().version())) continue;
    const auto [isSame, tellsLabel] = given(*line, entry);
    if (isSame) entry.repeatLater(line->text, tellsLabel, detail.text);
  }
}

bool writeOriginalLine(PropertyId property, std::string_view text, PropertyWriter& card) {
  return writeLinesOfText(property, text, card, Repeats::No);
}

void writeRepeatedLines(PropertyId property, std::string_view text, PropertyWriter& card) {
  writeLinesOfText(property, text, card, Repeats::Yes);
}

}  // namespace ox::vcard
