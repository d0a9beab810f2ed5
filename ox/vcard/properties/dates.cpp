#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/properties/card_date.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/properties/original_line.hpp"

// BDAY, and the other dates: ANNIVERSARY and X-ABDATE.

namespace ox::vcard {
namespace {

constexpr std::string_view kAnniversary = "ANNIVERSARY";

std::optional<CardDate> dateOf(const ContentLine& line, CardDraft& draft) {
  const auto* omitted = line.find(ParameterKind::OmittedYear);
  const auto read = readCardDate(draft.text(line), omitted != nullptr ? omitted->value : "");
  if (!read) {
    const auto* value = line.find(ParameterKind::Value);
    const bool isFreeText = value != nullptr && isWord(value->value, "TEXT");
    if (!isFreeText) {
      draft.repaired(line, std::string(line.name) + " is no readable date, kept as text");
    }
    return std::nullopt;
  }
  if (read->isUnusual) {
    draft.repaired(
        line, std::string(line.name) + " in an unusual spelling, read as " + read->date.toText());
  }
  return read;
}

void addDate(const PropertyRow& row, const Date& date, const ContentLine& line, CardDraft& draft) {
  draft.addEntry(row.property, date, line,
                 {.label = row.implied, .ownKinds = bitOf(ParameterKind::OmittedYear)});
}

}  // namespace

bool readBirthday(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  if (trimmed(line.value).empty()) return true;
  auto& birthday = draft.values.birthday();
  if (birthday) return false;
  const auto read = dateOf(line, draft);
  if (!read) return false;
  birthday = read->date;
  draft.preserveParameters(row.property, line, bitOf(ParameterKind::OmittedYear));
  return true;
}

void writeBirthday(const PropertyRow& row, PropertyWriter& card) {
  const auto* value = card.valueOf(row.property);
  if (value == nullptr) return;
  card.noteWritten("BDAY");
  const auto* single = std::get_if<Object>(value);
  const auto* date = single != nullptr ? single->as<Date>() : nullptr;
  const auto written = date != nullptr ? writeCardDate(*date, card.version()) : std::nullopt;
  if (!written || !written->isExact) card.noteInexact(row.property);
  if (!written) return;
  card.line().raw("BDAY").raw(written->omitsYear ? ";X-APPLE-OMIT-YEAR=1604" : "");
  card.writeParameters(row.property);
  card.line().raw(":").raw(written->text).end();
}

bool readDate(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  if (trimmed(line.value).empty()) return true;
  const auto date = dateOf(line, draft);
  if (!date) return false;
  addDate(row, date->date, line, draft);
  return true;
}

// An unusual spelling is not written again.
bool readOtherDate(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  if (trimmed(line.value).empty()) return true;
  const auto date = dateOf(line, draft);
  if (!date) return false;
  addDate(row, date->date, line, draft);
  if (!date->isUnusual) preserveOriginalLine(row.property, line, draft, LineHolds::Other);
  return true;
}

// In 4.0 it is what we write.
bool readAnniversary(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  return draft.facts.is40 ? readDate(row, line, draft) : readOtherDate(row, line, draft);
}

// ANNIVERSARY is a property of 4.0, of which a card has one.
bool writeDate(EntryWriter& entry) {
  const auto* date = entry.value().as<Date>();
  const auto written =
      date != nullptr ? writeCardDate(*date, entry.card().version()) : std::nullopt;
  if (!written) return false;
  const bool isAnniversary = !entry.is30() && entry.label() == Text(kABAnniversaryLabel) &&
                             !entry.card().hasWritten(kAnniversary);
  if (isAnniversary) {
    entry.card().noteWritten(kAnniversary);
    entry.start(kAnniversary, EntryWriter::OwnLines::No, EntryWriter::TellsLabel::Yes);
  } else {
    entry.start("X-ABDATE");
  }
  entry.line().raw(written->omitsYear ? ";X-APPLE-OMIT-YEAR=1604:" : ":").raw(written->text);
  entry.end();
  return written->isExact;
}

}  // namespace ox::vcard
