#include "ox/vcard/properties/stored_values.hpp"

#include <cassert>
#include <cstdint>
#include <memory>
#include <utility>

#include "ox/base/base64.hpp"
#include "ox/records/clean_text.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/vcard/properties/card_address.hpp"
#include "ox/vcard/properties/property_index.hpp"

namespace ox::vcard {
namespace {

// Names of custom properties live as long as the process: a card must not be able to fill it.
constexpr std::size_t kMostProperties = 256;

// What the ordinary lines of a card give back of these values: each property's own two directions,
// one after the other. The formatted name is left out: beside N it tells nothing, and without a
// name it is made of something else.
PropertyBag throughOrdinaryLines(const PropertyBag& properties, CardVersion version) {
  std::string written;
  const Data noPhoto;
  PropertyWriter writer({properties, noPhoto}, version, written, Folding::No);
  writeProperties(writer);
  CardDraft draft;
  ContentLine line;
  std::string_view rest = written;
  while (!rest.empty()) {
    const auto end = rest.find("\r\n");
    assert(end != std::string_view::npos && "every line that is written ends in CRLF");
    const auto text = rest.substr(0, end);
    rest.remove_prefix(end + 2);
    const auto colon = parseHead(text, line);
    assert(colon != std::string_view::npos && "what is written is a content line");
    line.value = text.substr(colon + 1);
    const auto* row = findProperty(line.name);
    if (row != nullptr) row->read(*row, line, draft);
  }
  settleAddressLabels(draft);
  draft.groups.join(draft.values, draft.unmodelled, draft.repairs);
  PropertyBag read;
  draft.values.moveInto(read);
  return read;
}

bool isKnownWithThatType(PropertyId custom) {
  return property_table::idOf(RecordKind::Person, property_table::nameOf(custom)) == custom;
}

}  // namespace

PropertyValue asNumbered(const PropertyValue& value) {
  const auto* held = std::get_if<MultiValuePtr>(&value);
  if (held == nullptr || *held == nullptr) return value;
  MultiValue numbered{(*held)->entries, 0};
  std::uint64_t number = 0;
  for (auto& entry : numbered.entries) {
    ++number;
    if (numbered.primary == 0 && entry.identifier == (*held)->primary) numbered.primary = number;
    entry.identifier = number;
  }
  return std::make_shared<const MultiValue>(std::move(numbered));
}

std::string storedTextOf(const PropertyBag& properties) {
  return base64(encodeProperties(properties));
}

std::optional<PropertyBag> valuesOfStoredText(std::string_view text) {
  const auto bytes = bytesOfBase64(text);
  if (!bytes || property_table::all(RecordKind::Person).size() > kMostProperties) {
    return std::nullopt;
  }
  try {
    auto properties = decodeProperties(*bytes, kMostProperties);
    cleanText(properties);
    return properties;
  } catch (const DamagedProperties&) {
    return std::nullopt;
  }
}

void takeStoredValues(const PropertyBag& stored, Array details, PropertyBag& properties) {
  PropertyBag builtIn;
  for (const auto& [id, value] : stored.entries()) {
    if (!fitsType(value, property_table::typeOf(id))) continue;
    if (id >= kFirstCustomProperty) {
      if (isKnownWithThatType(id)) properties.set(id, value);
    } else if (id <= property_id::kLastMulti) {
      builtIn.append(id, asNumbered(value));
    }
  }
  if (builtIn.empty()) return;
  const auto read = properties;
  // What the whole card says shapes a line: all parts of a name stand in one.
  auto written = read;
  for (const auto& [id, value] : builtIn.entries()) written.set(id, value);
  written.set(property_id::kUnmodelledLines, Object(std::move(details)));
  for (const auto version : {CardVersion::V30, CardVersion::V40}) {
    const auto ordinary = throughOrdinaryLines(written, version);
    std::size_t unchanged = 0;
    for (const auto& [id, value] : builtIn.entries()) {
      if (!sameValue(read.value(id), ordinary.value(id))) continue;
      properties.set(id, value);
      ++unchanged;
    }
    if (unchanged == builtIn.entries().size()) return;
  }
}

}  // namespace ox::vcard
