#include "ox/vcard/properties/exact_values.hpp"

#include <cstdint>
#include <memory>
#include <utility>

#include "ox/base/base64.hpp"
#include "ox/records/clean_text.hpp"
#include "ox/records/property_codec.hpp"
#include "ox/vcard/read/reader.hpp"
#include "ox/vcard/write/writer.hpp"

namespace ox::vcard {
namespace {

// Names of custom properties live as long as the process: a card must not be able to fill it.
constexpr std::size_t kMostProperties = 256;

// What the ordinary lines of a card give back of these values.
PropertyBag asOrdinaryLines(const PropertyBag& properties, CardVersion version) {
  std::string card;
  appendCard(properties, nullptr, {.version = version}, card);
  const auto exact = card.rfind(std::string("\r\n").append(kExactValuesName));
  if (exact != std::string::npos) card.replace(exact + 2, std::string::npos, "END:VCARD\r\n");
  MemorySource source(card);
  Reader reader(source);
  auto result = reader.next();
  auto* read = result ? std::get_if<Card>(&*result) : nullptr;
  return read != nullptr ? std::move(read->properties) : PropertyBag();
}

bool sameIn(const PropertyBag& a, const PropertyBag& b, PropertyId id) {
  const auto* left = a.find(id);
  const auto* right = b.find(id);
  if (left == nullptr || right == nullptr) return left == right;
  return sameValue(*left, *right);
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

std::string exactValuesText(const PropertyBag& properties) {
  return base64(encodeProperties(properties));
}

std::optional<PropertyBag> readExactValues(std::string_view text) {
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

void takeExactValues(const PropertyBag& exact, PropertyBag& properties) {
  PropertyBag builtIn;
  for (const auto& [id, value] : exact.entries()) {
    if (!fitsType(value, property_table::typeOf(id))) continue;
    if (id >= kFirstCustomProperty) {
      properties.set(id, value);
    } else if (id <= property_id::kOtherDates) {
      builtIn.append(id, asNumbered(value));
    }
  }
  if (builtIn.empty()) return;
  const auto in30 = asOrdinaryLines(builtIn, CardVersion::V30);
  const auto in40 = asOrdinaryLines(builtIn, CardVersion::V40);
  const auto read = properties;
  for (const auto& [id, value] : builtIn.entries()) {
    if (sameIn(read, in30, id) || sameIn(read, in40, id)) properties.set(id, value);
  }
}

}  // namespace ox::vcard
