#include "ox/formats/json/jcard.hpp"

#include <array>
#include <charconv>
#include <cstdint>

#include "ox/base/text/ascii_case.hpp"
#include "ox/formats/json/extended_date.hpp"
#include "ox/formats/json/parameters.hpp"
#include "ox/vcard/lines/name_table.hpp"
#include "ox/vcard/lines/structured_value.hpp"

namespace ox::formats {
namespace {

// How a text value is parted.
enum class Shape : std::uint8_t { One, List, Components, ComponentsOfLists };

struct TypeRow {
  std::string_view name;  // upper case
  std::string_view type;
  Shape shape = Shape::One;
};

// RFC 6350, section 6, RFC 6474, 6715, 8605 and 9554.
constexpr std::array kTypes = {
    TypeRow{"VERSION", "text"},
    TypeRow{"SOURCE", "uri"},
    TypeRow{"KIND", "text"},
    TypeRow{"XML", "text"},
    TypeRow{"FN", "text"},
    TypeRow{"N", "text", Shape::ComponentsOfLists},
    TypeRow{"NICKNAME", "text", Shape::List},
    TypeRow{"PHOTO", "uri"},
    TypeRow{"BDAY", "date-and-or-time"},
    TypeRow{"ANNIVERSARY", "date-and-or-time"},
    TypeRow{"GENDER", "text", Shape::Components},
    TypeRow{"ADR", "text", Shape::ComponentsOfLists},
    TypeRow{"TEL", "text"},
    TypeRow{"EMAIL", "text"},
    TypeRow{"IMPP", "uri"},
    TypeRow{"LANG", "language-tag"},
    TypeRow{"TZ", "text"},
    TypeRow{"GEO", "uri"},
    TypeRow{"TITLE", "text"},
    TypeRow{"ROLE", "text"},
    TypeRow{"LOGO", "uri"},
    TypeRow{"ORG", "text", Shape::Components},
    TypeRow{"MEMBER", "uri"},
    TypeRow{"RELATED", "uri"},
    TypeRow{"CATEGORIES", "text", Shape::List},
    TypeRow{"NOTE", "text"},
    TypeRow{"PRODID", "text"},
    TypeRow{"REV", "timestamp"},
    TypeRow{"SOUND", "uri"},
    TypeRow{"UID", "uri"},
    TypeRow{"CLIENTPIDMAP", "text", Shape::Components},
    TypeRow{"URL", "uri"},
    TypeRow{"KEY", "uri"},
    TypeRow{"FBURL", "uri"},
    TypeRow{"CALADRURI", "uri"},
    TypeRow{"CALURI", "uri"},
    TypeRow{"BIRTHPLACE", "text"},
    TypeRow{"DEATHPLACE", "text"},
    TypeRow{"DEATHDATE", "date-and-or-time"},
    TypeRow{"EXPERTISE", "text"},
    TypeRow{"HOBBY", "text"},
    TypeRow{"INTEREST", "text"},
    TypeRow{"ORG-DIRECTORY", "uri"},
    TypeRow{"CONTACT-URI", "uri"},
    TypeRow{"CREATED", "timestamp"},
    TypeRow{"GRAMGENDER", "text"},
    TypeRow{"LANGUAGE", "language-tag"},
    TypeRow{"PRONOUNS", "text"},
    TypeRow{"SOCIALPROFILE", "uri"},
    TypeRow{"JSPROP", "text"},
};

constexpr vcard::NameTable kTable(kTypes);

void writeList(std::string_view value, JsonWriter& out) {
  for (const auto part : vcard::partsOf(value, ',')) out.writeText(textOf(part));
}

// A text when there is one, which is how a single component stands for the list of it (section
// 3.3.1.3).
void writeComponents(std::string_view value, Shape shape, JsonWriter& out) {
  const auto components = vcard::partsOf(value, ';');
  if (components.size() > 1) out.beginArray();
  for (const auto component : components) {
    const bool isList =
        shape == Shape::ComponentsOfLists && vcard::hasList(component, vcard::Dialect::V30);
    if (!isList) {
      out.writeText(textOf(component));
      continue;
    }
    out.beginArray();
    writeList(component, out);
    out.endArray();
  }
  if (components.size() > 1) out.endArray();
}

void writeTextValue(std::string_view value, Shape shape, JsonWriter& out) {
  switch (shape) {
    case Shape::One:
      return out.writeText(textOf(value));
    case Shape::List:
      return writeList(value, out);
    case Shape::Components:
    case Shape::ComponentsOfLists:
      return writeComponents(value, shape, out);
  }
}

// A whole number as one; any other text that claims to be one stays a text.
void writeIntegerValue(std::string_view value, JsonWriter& out) {
  std::int64_t number = 0;
  const auto* end = value.data() + value.size();
  const auto result = std::from_chars(value.data(), end, number);
  const bool isNumber = result.ec == std::errc() && result.ptr == end;
  return isNumber ? out.writeInteger(number) : out.writeText(value);
}

void writeRealValue(std::string_view value, JsonWriter& out) {
  double number = 0;
  const auto* end = value.data() + value.size();
  const auto result = std::from_chars(value.data(), end, number, std::chars_format::fixed);
  const bool isNumber = result.ec == std::errc() && result.ptr == end && number - number == 0;
  return isNumber ? out.writeReal(number) : out.writeText(value);
}

void writeBooleanValue(std::string_view value, JsonWriter& out) {
  const auto word = lowerCase(value);
  const bool isBoolean = word == "true" || word == "false";
  return isBoolean ? out.writeBoolean(word == "true") : out.writeText(value);
}

void writeValue(std::string_view value, std::string_view type, Shape shape, JsonWriter& out) {
  if (type == "text") return writeTextValue(value, shape, out);
  if (type == "unknown") return out.writeText(value);
  if (type == "integer") return writeIntegerValue(value, out);
  if (type == "float") return writeRealValue(value, out);
  if (type == "boolean") return writeBooleanValue(value, out);
  if (type == "time") return out.writeText(extendedTime(value));
  if (type == "utc-offset") return out.writeText(extendedOffset(value));
  const bool isDate =
      type == "date" || type == "date-time" || type == "date-and-or-time" || type == "timestamp";
  out.writeText(isDate ? extendedDateTime(value) : textOf(value));
}

}  // namespace

void writeJCardProperty(const vcard::ContentLine& line, JsonWriter& out) {
  const auto* row = kTable.find(line.name);
  Parameters parameters(line);
  if (!line.group.empty()) parameters.addGroup(line.group);
  std::string_view type = parameters.valueType();
  if (type.empty()) type = row != nullptr ? row->type : "unknown";
  out.beginArray();
  out.writeText(lowerCase(line.name));
  parameters.write(out);
  out.writeText(type);
  writeValue(line.value, type, row != nullptr ? row->shape : Shape::One, out);
  out.endArray();
}

void writeJCard(const WrittenCard& card, JsonWriter& out) {
  out.beginArray();
  out.writeText("vcard");
  out.beginArray();
  out.beginArray();
  out.writeText("version");
  out.beginObject();
  out.endObject();
  out.writeText("text");
  out.writeText("4.0");
  out.endArray();
  for (const auto& line : card.lines()) writeJCardProperty(line, out);
  out.endArray();
  out.endArray();
}

}  // namespace ox::formats
