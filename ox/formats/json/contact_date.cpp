// The anniversaries of a Card object (RFC 9553, section 2.8.1; RFC 9555, section 2.5.3).
#include <array>
#include <cstdint>
#include <optional>

#include "ox/formats/json/contact_rows.hpp"
#include "ox/formats/json/extended_date.hpp"
#include "ox/vcard/lines/ascii.hpp"

namespace ox::formats {
namespace {

using vcard::ContentLine;

struct KindRow {
  std::string_view name;
  std::string_view kind;
  std::string_view place;  // the line that tells where
};
constexpr std::array kKinds = {
    KindRow{"BDAY", "birth", "BIRTHPLACE"},
    KindRow{"DEATHDATE", "death", "DEATHPLACE"},
    KindRow{"ANNIVERSARY", "wedding", {}},
};

// 0: not there.
struct PartialDate {
  int year = 0;
  int month = 0;
  int day = 0;
};

// A day alone is no date here: it wants a month.
struct FormRow {
  std::string_view form;
  int year;  // where the digits of each part begin; -1: nowhere
  int month;
  int day;
};
constexpr std::array kForms = {
    FormRow{"0000-00-00", 0, 5, 8}, FormRow{"0000-00", 0, 5, -1}, FormRow{"0000", 0, -1, -1},
    FormRow{"--00-00", -1, 2, 5},   FormRow{"--00", -1, 2, -1},
};

int digitsAt(std::string_view text, int at, int count) {
  if (at < 0) return 0;
  int number = 0;
  for (const char c : text.substr(static_cast<std::size_t>(at), static_cast<std::size_t>(count))) {
    number = number * 10 + (c - '0');
  }
  return number;
}

bool hasForm(std::string_view text, std::string_view form) {
  if (text.size() != form.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (form[i] == '0' ? !vcard::isDigit(text[i]) : text[i] != form[i]) return false;
  }
  return true;
}

std::optional<PartialDate> partialDate(std::string_view value) {
  const auto text = extendedDateTime(value);
  for (const auto& row : kForms) {
    if (!hasForm(text, row.form)) continue;
    const PartialDate date{digitsAt(text, row.year, 4), digitsAt(text, row.month, 2),
                           digitsAt(text, row.day, 2)};
    const bool isReal = date.month <= 12 && date.day <= 31 && (row.month < 0 || date.month > 0) &&
                        (row.day < 0 || date.day > 0) && (row.year < 0 || date.year > 0);
    return isReal ? std::optional(date) : std::nullopt;
  }
  return std::nullopt;
}

const KindRow* kindOf(std::string_view name) {
  for (const auto& row : kKinds) {
    if (vcard::isWord(name, row.name)) return &row;
  }
  return nullptr;
}

void writePart(std::string_view name, int number, JsonWriter& out) {
  if (number > 0) out.writeMember(name, std::int64_t{number});
}

void writeDate(ContactEntry& entry) {
  auto& out = entry.out;
  out.writeName("date");
  out.beginObject();
  auto date = partialDate(entry.value);
  if (!date) {
    out.writeMember("@type", "Timestamp");
    out.writeMember("utc", utcMoment(entry.value));
  } else {
    const auto omitted = entry.parameters.take("x-apple-omit-year");
    if (omitted && *omitted == std::to_string(date->year)) date->year = 0;
    out.writeMember("@type", "PartialDate");
    writePart("year", date->year, out);
    writePart("month", date->month, out);
    writePart("day", date->day, out);
    out.writeMember("calendarScale", entry.parameters.take("calscale"));
  }
  out.endObject();
}

void writePlace(std::string_view name, ContactEntry& entry) {
  const auto* line = name.empty() ? nullptr : entry.card.placed(name);
  if (line == nullptr) return;
  const bool isUri = Parameters(*line).valueType() == "uri";
  entry.out.writeName("place");
  entry.out.beginObject();
  entry.out.writeMember(isUri ? "coordinates" : "full", textOf(line->value));
  entry.out.endObject();
}

}  // namespace

bool isContactDate(const ContactLines& /*card*/, const ContentLine& line) {
  const auto type = Parameters(line).valueType();
  if (type == "text") return false;
  return partialDate(line.value).has_value() || !utcMoment(line.value).empty();
}

// The place of a birth or a death that has a date, whose object it is told in.
bool isPlaceOfDate(const ContactLines& card, const ContentLine& line) {
  if (!line.group.empty()) return false;
  Parameters parameters(line);
  if (!parameters.empty()) return false;
  const bool isUri = parameters.valueType() == "uri";
  if (isUri && !vcard::startsWithWord(line.value, "GEO:")) return false;
  for (const auto& row : kKinds) {
    if (!vcard::isWord(line.name, row.place)) continue;
    const auto* date = card.card().find(row.name);
    return date != nullptr && isContactDate(card, *date) && card.card().find(row.place) == &line;
  }
  return false;
}

void writeContactDate(ContactEntry& entry) {
  const auto* row = kindOf(entry.line.name);
  entry.out.writeMember("kind", row->kind);
  writeDate(entry);
  const bool isFirst = entry.card.placed(row->name) == &entry.line;
  if (isFirst) writePlace(row->place, entry);
}

}  // namespace ox::formats
