#include <utility>

#include "ox/base/text/utf8.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/uri.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/properties/stored_values.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

// Properties that tell of the card or of its other lines: VERSION and KIND, which were looked at
// before, X-ABLabel, and the two that only we write, X-OX-PROPERTY and X-OX-LINE.

namespace ox::vcard {

bool readNothing(const PropertyRow& /*row*/, const ContentLine& /*line*/, CardDraft& /*draft*/) {
  return true;
}

bool readLabel(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  if (line.group.empty()) return false;
  GroupNote note{groupKey(line.group), "X-ABLabel", nullptr, 0, draft.text(line)};
  appendPreserved(line, draft.facts.dialect, note.preserved);
  note.line = line.number;
  draft.groups.add(std::move(note));
  return true;
}

bool readStoredValues(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  if (draft.storedValues) return false;
  draft.storedValues = valuesOfStoredText(line.value);
  return draft.storedValues.has_value();
}

// A line or a detail that the version did not admit.
bool readWrappedLine(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  auto text = validUtf8(percentDecoded(line.value));
  if (text.empty()) return false;
  if (isWord(lineNameOf(text).name, "FN")) draft.name.isRepeated = true;
  draft.unmodelled.addEncoded(std::move(text));
  return true;
}

}  // namespace ox::vcard
