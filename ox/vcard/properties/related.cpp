#include <array>
#include <utility>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/each_property.hpp"

// Related persons: RELATED of 4.0, whose TYPE names the relation, X-ABRELATEDNAMES, and the X-
// properties of older programs, one a relation.

namespace ox::vcard {
namespace {

// The relations that RFC 6350, section 6.6.6, has a word for come first.
constexpr std::size_t kStandardRelations = 4;

struct RelationRow {
  std::string_view word;
  std::string_view label;
};

constexpr std::array kRelations = {
    RelationRow{"SPOUSE", kABSpouseLabel},   RelationRow{"CHILD", kABChildLabel},
    RelationRow{"PARENT", kABParentLabel},   RelationRow{"FRIEND", kABFriendLabel},
    RelationRow{"FATHER", kABFatherLabel},   RelationRow{"MOTHER", kABMotherLabel},
    RelationRow{"BROTHER", kABBrotherLabel}, RelationRow{"SISTER", kABSisterLabel},
    RelationRow{"PARTNER", kABPartnerLabel}, RelationRow{"ASSISTANT", kABAssistantLabel},
    RelationRow{"MANAGER", kABManagerLabel},
};

// The label of a relation that RELATED names; empty when there is none.
std::string_view relationLabel(std::string_view word) {
  for (const auto& row : kRelations) {
    if (isWord(word, row.word)) return row.label;
  }
  return {};
}

// The word of RELATED for a relation's label; empty when RFC 6350 has none.
std::string_view relationWord(std::string_view label) {
  constexpr std::array<std::string_view, kStandardRelations> kWordsOfRelations = {
      "spouse", "child", "parent", "friend"};
  for (std::size_t i = 0; i < kStandardRelations; ++i) {
    if (kRelations[i].label == label) return kWordsOfRelations[i];
  }
  return {};
}

bool isText(const ContentLine& line) {
  const auto* value = line.find(ParameterKind::Value);
  return value != nullptr && isWord(value->value, "TEXT");
}

// What a reader of RELATED makes of TYPE words that were preserved.
struct PreservedRelation {
  bool isEmpty = true;      // there are none
  bool givesLabel = false;  // they tell the label
  bool isSayable = true;    // label and words come back from RELATED
};

PreservedRelation preservedRelation(std::string_view parameters, const Text& label) {
  if (parameters.empty()) return {};
  const PreservedTypeWords preserved(parameters);
  const auto& words = preserved.words();
  if (words.known != 0) return {false, false, false};
  if (words.unknown.empty()) return {};
  std::string_view relation;
  for (const auto word : words.unknown) {
    if (relation.empty()) relation = relationLabel(word);
  }
  if (relation.empty()) return {false, false, true};
  return {false, label == relation, label && words.unknown.size() > 1};
}

}  // namespace

bool readRelation(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  auto name = draft.text(line);
  if (trimmed(name).empty()) return true;
  draft.addEntry(row.property, std::move(name), line, {.label = row.implied});
  return true;
}

bool readRelated(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  auto name = draft.text(line);
  if (trimmed(name).empty()) return true;
  // A reference to another card is no name: RFC 6350, section 6.6.6.
  if (!isText(line) && isUri(trimmed(name))) return false;
  readTypeWords(line, draft.types);
  const auto& words = draft.types.unknown;
  std::string_view label;
  for (const auto word : words) {
    if (label.empty()) label = relationLabel(word);
  }
  const bool isUsed = words.size() == 1 && !label.empty();
  draft.addEntry(row.property, std::move(name), line,
                 {.label = label,
                  .unknownWords = isUsed ? UnknownWords::AreUsed : UnknownWords::ArePreserved});
  return true;
}

bool writeRelated(EntryWriter& entry) {
  const auto* value = entry.value().text();
  if (value == nullptr) return false;
  const CardText text(*value);
  if (trimmed(text.view()).empty()) return false;
  const auto& label = entry.label();
  const auto word = label ? relationWord(*label) : std::string_view();
  const auto preserved = preservedRelation(entry.parameters(), label);
  const bool isStandard = !entry.is30() && preserved.isSayable;
  const bool isTyped = isStandard && !preserved.givesLabel && preserved.isEmpty && !word.empty();
  const bool tellsLabel = isTyped || (isStandard && preserved.givesLabel);
  entry.start(isStandard ? "RELATED;VALUE=text" : "X-ABRELATEDNAMES", EntryWriter::OwnLines::No,
              tellsLabel ? EntryWriter::TellsLabel::Yes : EntryWriter::TellsLabel::No);
  if (isTyped) entry.line().raw(";TYPE=").raw(word);
  entry.line().raw(":").text(text.view());
  entry.end();
  return !text.isChanged();
}

}  // namespace ox::vcard
