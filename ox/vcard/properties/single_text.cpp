#include <algorithm>

#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/properties/original_line.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

// Properties that hold one text: NICKNAME, TITLE, X-MAIDENNAME, X-PHONETIC-..., and NOTE, whose
// lines join.

namespace ox::vcard {

namespace {

bool isReading(const PropertyRow& row) {
  return row.property == property_id::kFirstPhonetic || row.property == property_id::kLastPhonetic;
}

void writeOwnLine(const PropertyRow& row, std::string_view text, PropertyWriter& card) {
  card.line().raw(row.name);
  card.writeParameters(row.property);
  const auto verbatim = card.unmodelled().verbatimOf(row.property, 0);
  card.line().raw(":");
  if (!verbatim.empty() && unescaped(verbatim) == text) {
    card.line().raw(verbatim).end();
  } else {
    card.line().text(text).end();
  }
}

}  // namespace

bool readSingleText(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  if (line.value.empty()) return true;
  auto& held = draft.values.text(row.property);
  // SORT-AS may have given it already.
  if (!held.empty()) {
    return isReading(row) && line.parameters.empty() && held == draft.text(line);
  }
  held = draft.text(line);
  if (row.property == property_id::kNickname && hasList(line.value, draft.facts.dialect)) {
    draft.preserveVerbatim(row.property, canonicalPieces(line.value, ','));
  }
  draft.preserveParameters(row.property, line);
  return true;
}

// Several notes are one, unless their parameters tell them apart.
bool readNote(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  if (line.value.empty()) return true;
  auto& note = draft.values.text(row.property);
  if (note.empty()) {
    note = draft.text(line);
    draft.noteParameters = draft.preserveParameters(row.property, line);
    return true;
  }
  readTypeWords(line, draft.types);
  if (draft.parametersOf(line, draft.types.known) != draft.noteParameters) return false;
  if (draft.types.rank != 0) {
    draft.repaired(line, "preference of one note among several left out");
  }
  (note += '\n') += draft.text(line);
  return true;
}

void writeSingleText(const PropertyRow& row, PropertyWriter& card) {
  const auto text = card.textOf(row.property);
  if (text.empty()) return;
  if (!writeOriginalLine(row.property, text, card)) writeOwnLine(row, text, card);
  writeRepeatedLines(row.property, text, card);
}

// A line that says of a reading what the card's own says would be passed over.
bool lacksSingleText(const PropertyRow& row, std::string_view line, PropertyWriter& card) {
  const auto text = card.textOf(row.property);
  if (text.empty()) return true;
  const auto value = line.substr(std::min(line.find_first_of(":;") + 1, line.size()));
  return isReading(row) && unescaped(value) == text;
}

// Another note would join the first one when that has lost the parameters that told them apart.
bool lacksNote(const PropertyRow& row, std::string_view line, PropertyWriter& card) {
  if (lacksSingleText(row, line, card)) return true;
  return std::ranges::any_of(
      card.unmodelled().parametersOf(row.property, 0),
      [&](const DetailView& each) { return !areAdmitted(each.text, card.version()); });
}

}  // namespace ox::vcard
