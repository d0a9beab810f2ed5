// The addresses of a Card object (RFC 9553, section 2.5.1; RFC 9555, section 2.6).
#include <array>

#include "ox/base/text/ascii_case.hpp"
#include "ox/formats/json/contact_rows.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::formats {
namespace {

// In the order of ADR: RFC 6350, section 6.3.1, then RFC 9554, section 2.1.
constexpr std::array kComponents = {
    "postOfficeBox", "apartment", "name",        "locality", "region",   "postcode",
    "country",       "room",      "apartment",   "floor",    "number",   "name",
    "building",      "block",     "subdistrict", "district", "landmark", "direction"};
constexpr std::size_t kStreet = 2;
constexpr std::size_t kFirstFine = 7;

bool hasFineParts(const std::vector<std::string_view>& parts) {
  for (std::size_t i = kFirstFine; i < parts.size(); ++i) {
    if (!parts[i].empty()) return true;
  }
  return false;
}

void writeComponents(std::string_view value, JsonWriter& out) {
  const auto parts = vcard::partsOf(value, ';');
  // Fine parts say again what box, extension and street say in one.
  const bool isFine = hasFineParts(parts);
  out.writeName("components");
  out.beginArray();
  for (std::size_t i = 0; i < parts.size() && i < kComponents.size(); ++i) {
    if (isFine && i >= 1 && i <= kStreet) continue;
    for (const auto part : vcard::partsOf(parts[i], ',')) {
      if (part.empty()) continue;
      out.beginObject();
      out.writeMember("kind", kComponents[i]);
      out.writeMember("value", textOf(part));
      out.endObject();
    }
  }
  out.endArray();
  out.writeName("isOrdered");
  out.writeBoolean(false);
}

}  // namespace

void writeContactAddress(ContactEntry& entry) {
  auto& out = entry.out;
  writeComponents(entry.value, out);
  auto country = entry.parameters.take("cc").value_or("");
  if (country.empty()) country = entry.card.countryOf(entry.line);
  if (!country.empty()) out.writeMember("countryCode", upperCase(country));
  out.writeMember("full", entry.parameters.take("label"));
  out.writeMember("coordinates", entry.parameters.take("geo"));
  out.writeMember("timeZone", entry.parameters.take("tz"));
}

// Coordinates, or a time zone by its name; one told as an offset has no place.
bool isContactPlace(const ContactLines& /*card*/, const vcard::ContentLine& line) {
  if (vcard::isWord(line.name, "GEO")) return vcard::startsWithWord(line.value, "GEO:");
  const auto type = Parameters(line).valueType();
  return (type.empty() || type == "text") && line.value.find('/') != std::string_view::npos;
}

void writeContactPlace(ContactEntry& entry) {
  const bool isGeo = vcard::isWord(entry.line.name, "GEO");
  entry.out.writeMember(isGeo ? "coordinates" : "timeZone", entry.text());
}

}  // namespace ox::formats
