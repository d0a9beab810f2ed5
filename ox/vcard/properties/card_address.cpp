#include "ox/vcard/properties/card_address.hpp"

#include <algorithm>
#include <optional>
#include <utility>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/structured_value.hpp"
#include "ox/vcard/properties/dictionary_texts.hpp"
#include "ox/vcard/properties/each_property.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::vcard {
namespace {

// The components of ADR: RFC 6350, section 6.3.1.
enum Component : std::size_t { kBox, kExtended, kStreet, kCity, kState, kZip, kCountry };
constexpr std::size_t kComponents = 7;
using Components = std::array<std::string_view, kComponents>;

// Their keys, and that of the country code, which ADR knows nothing of.
constexpr std::size_t kCode = kComponents;
constexpr std::array kKeys = {
    kAddressPostOfficeBoxKey, kAddressExtendedKey, kABAddressStreetKey,  kABAddressCityKey,
    kABAddressStateKey,       kABAddressZIPKey,    kABAddressCountryKey, kABAddressCountryCodeKey};

bool isCountryCode(std::string_view text) {
  return text.size() == 2 && isLetter(text[0]) && isLetter(text[1]);
}

std::string streetWithAll(const Components& parts) {
  std::string street;
  for (const auto part : {parts[kBox], parts[kExtended], parts[kStreet]}) {
    if (part.empty()) continue;
    if (!street.empty()) street += '\n';
    street += unescaped(part);
  }
  return street;
}

// Without the lines that the first components of ADR stand in; missing when it does not start so.
std::optional<std::string_view> streetAlone(std::string_view street, std::string_view box,
                                            std::string_view extended) {
  for (const auto part : {box, extended}) {
    if (part.empty()) continue;
    if (!street.starts_with(part)) return std::nullopt;
    street.remove_prefix(part.size());
    if (street.empty()) continue;
    if (street.front() != '\n') return std::nullopt;
    street.remove_prefix(1);
    if (street.empty()) return std::nullopt;
  }
  return street;
}

// True when a reader makes these components of the value.
bool gives(std::string_view value, const Components& parts) {
  const auto read = components<kComponents>(value);
  for (std::size_t i = 0; i < read.size(); ++i) {
    if (unescaped(read[i]) != parts[i]) return false;
  }
  return true;
}

void setCountryCode(std::string_view code, Object& value) {
  Dictionary address = *value.dictionary();
  address.set(kABAddressCountryCodeKey, code);
  value = std::move(address);
}

}  // namespace

bool readAddress(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  const auto parts = components<kComponents>(line.value);
  Dictionary address;
  address.reserve(parts.size() + 1);
  const auto put = [&](Component component) {
    if (!parts[component].empty()) {
      address.set(kKeys[component], unescaped(parts[component]));
    }
  };
  if (parts[kBox].empty() && parts[kExtended].empty()) {
    put(kStreet);
  } else {
    address.set(kABAddressStreetKey, streetWithAll(parts));
  }
  for (const auto component : {kCity, kState, kZip, kCountry, kBox, kExtended}) put(component);
  if (address.empty()) return true;
  draft.addEntry(row.property, std::move(address), line, {});
  if (hasList(line.value, draft.facts.dialect)) {
    draft.preserveVerbatim(row.property, canonicalComponents(parts));
  }
  return true;
}

// X-ABADR names the country of the address in its group.
bool readCountryCode(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  if (line.group.empty()) return false;
  GroupNote note{groupKey(line.group), "X-ABADR", setCountryCode, row.property, draft.text(line)};
  if (!isCountryCode(note.text)) return false;
  appendPreserved(line, draft.facts.dialect, note.preserved);
  note.line = line.number;
  draft.groups.add(std::move(note));
  return true;
}

bool writeAddress(EntryWriter& entry) {
  const auto* dictionary = entry.value().dictionary();
  if (dictionary == nullptr) return false;
  const DictionaryTexts<kKeys.size()> texts(*dictionary, kKeys);
  Components parts{};
  for (std::size_t i = 0; i < kComponents; ++i) parts[i] = texts[i];
  const auto street = streetAlone(parts[kStreet], parts[kBox], parts[kExtended]);
  if (street) {
    parts[kStreet] = *street;
  } else {
    parts[kBox] = parts[kExtended] = {};
  }
  const auto saysNothing = [](std::string_view part) {
    return trimmed(CardText(part).view()).empty();
  };
  // A reader takes blanks around a component off.
  const bool areBare =
      std::ranges::all_of(parts, [](std::string_view part) { return trimmed(part) == part; });
  if (std::all_of(parts.begin(), parts.end(), saysNothing)) return false;

  const auto code = texts[kCode];
  const bool hasCode = isCountryCode(code);
  entry.start("ADR", hasCode ? EntryWriter::OwnLines::Yes : EntryWriter::OwnLines::No);
  if (!entry.verbatim().empty() && gives(entry.verbatim(), parts)) {
    entry.line().raw(":").raw(entry.verbatim());
  } else {
    std::string_view separator = ":";
    for (const auto part : parts) {
      entry.line().raw(separator).text(CardText(part).view());
      separator = ";";
    }
  }
  entry.end();
  if (hasCode) entry.line().raw(entry.group()).raw(".X-ABADR:").raw(code).end();
  return texts.isExact() && texts.arePlain() && areBare && street && (hasCode || code.empty());
}

}  // namespace ox::vcard
