#include "ox/vcard/properties/card_address.hpp"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

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

// Their keys, and those of the country code and the formatted text, which are no components.
constexpr std::size_t kCode = kComponents;
constexpr std::size_t kLabel = kComponents + 1;
constexpr std::array kKeys = {
    kAddressPostOfficeBoxKey, kAddressExtendedKey,      kABAddressStreetKey,
    kABAddressCityKey,        kABAddressStateKey,       kABAddressZIPKey,
    kABAddressCountryKey,     kABAddressCountryCodeKey, kAddressLabelKey};

// How the card wrote an address of which only the formatted text is known.
constexpr std::string_view kLabelAlone = ";;;;;;";

// RFC 9554, section 2.1, adds components after the seven, which vCard 3.0 does not know.
struct SplitAddress {
  Components parts{};
  std::string_view rest;  // after the country and its semicolon
};

SplitAddress splitAddress(std::string_view value) {
  const auto all = components<kComponents + 1>(value);
  SplitAddress address;
  std::copy_n(all.begin(), kComponents, address.parts.begin());
  address.rest = wholeComponents<kComponents + 1>(value).back();
  if (areBlank(address.rest)) address.rest = {};
  return address;
}

// Without the components that only RFC 9554 knows.
std::string_view sevenOf(std::string_view value) {
  const auto rest = splitAddress(value).rest;
  return rest.empty() ? value : value.substr(0, value.size() - rest.size() - 1);
}

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
  const auto read = splitAddress(value).parts;
  for (std::size_t i = 0; i < read.size(); ++i) {
    if (unescaped(read[i]) != parts[i]) return false;
  }
  return true;
}

bool isPlainText(std::string_view text) {
  return !trimmed(CardText(text).view()).empty();
}

// RFC 6350 writes its line breaks as \n, RFC 6868 as ^n.
std::string labelOf(const ContentLine& line) {
  const auto* parameter = line.find(ParameterKind::Label);
  if (parameter == nullptr) return {};
  auto label = unescaped(parameterText(*parameter));
  return isPlainText(label) ? label : std::string();
}

void writeLabelParameter(std::string_view label, LineWriter& line) {
  std::string escaped;
  for (const char c : label) {
    if (c == '\n') {
      escaped += "\\n";
    } else {
      if (c == '\\') escaped += c;
      escaped += c;
    }
  }
  line.parameter("LABEL", escaped);
}

Dictionary addressOfLabel(std::string_view label) {
  Dictionary address;
  address.set(kABAddressStreetKey, label);
  address.set(kAddressLabelKey, label);
  return address;
}

void addLabelAlone(std::string_view label, const ContentLine& line, CardDraft& draft) {
  draft.addEntry(property_id::kAddress, addressOfLabel(label), line,
                 {.ownKinds = bitOf(ParameterKind::Label)});
  draft.preserveVerbatim(property_id::kAddress, kLabelAlone);
}

// Words that every address is meant by unless it says otherwise (RFC 2426, section 3.2.2).
bool isDefaultWord(std::string_view word) {
  return isWord(word, "DOM") || isWord(word, "INTL") || isWord(word, "POSTAL") ||
         isWord(word, "PARCEL");
}

std::string_view parametersOfEntry(const CardDraft& draft, std::size_t entry) {
  for (const auto& each : draft.unmodelled.details) {
    const bool isIts = each.property == property_id::kAddress && each.entry == entry;
    if (isIts && each.kind == DetailKind::Parameters) return each.text;
  }
  return {};
}

// What LABEL says beside the place that TYPE names; empty when an address says the same anyway.
std::string parametersOfLabel(const ContentLine& line, CardDraft& draft, std::uint32_t used) {
  std::erase_if(draft.types.unknown, isDefaultWord);
  return draft.parametersOf(line, draft.types.known & ~used);
}

// More than anybody has; each is looked for among all others.
constexpr std::size_t kMostLabelled = 256;

// Finds the places of LABEL lines. An address has one at most.
class AddressLabels {
 public:
  explicit AddressLabels(CardDraft& draft)
      : draft_(draft), entries_(draft.values.multi(property_id::kAddress).entries) {
    const auto count = std::min(entries_.size(), kMostLabelled);
    for (std::size_t number = 1; number <= count; ++number) ofAdr_.push_back(number);
    for (const auto& each : draft.unmodelled.details) {
      const bool isOurs = each.property == property_id::kAddress;
      if (!isOurs || each.kind != DetailKind::Verbatim || each.text != kLabelAlone) continue;
      std::erase(ofAdr_, each.entry);
    }
  }

  // Gives it to the first address of its group or its TYPE that has none and says the same beside.
  bool join(const ContentLine& line) {
    const auto said = look(line);
    for (const auto number : found_) {
      auto& value = entries_[number - 1].value;
      const auto* address = value.dictionary();
      if (address == nullptr || address->get(kAddressLabelKey).text() != nullptr) continue;
      if (!said.empty() && said != parametersOfEntry(draft_, number)) continue;
      auto labelled = *address;
      labelled.set(kAddressLabelKey, unescaped(line.value));
      value = std::move(labelled);
      return true;
    }
    return false;
  }

  // An address is there of which it says something else, in another language for one.
  bool isBeside(const ContentLine& line) { return !look(line).empty() && !found_.empty(); }

 private:
  // What the line says beside its label and its value; finds the addresses that it may belong to.
  std::string look(const ContentLine& line) {
    readTypeWords(line, draft_.types);
    const auto type = typeLabel(property_id::kAddress, draft_.types.known);
    auto label = std::string(type.label);
    const auto inGroup = draft_.groups.entriesIn(groupKey(line.group), property_id::kAddress);
    found_ = ofAdr_;
    std::erase_if(found_, [&](std::size_t number) {
      const bool isInGroup = std::ranges::find(inGroup, number) != inGroup.end();
      if (!line.group.empty() && !isInGroup) return true;
      // The group alone tells it where TYPE does not.
      if (!line.group.empty() && label.empty()) return false;
      return entries_[number - 1].label.value_or("") != label;
    });
    return parametersOfLabel(line, draft_, type.used);
  }

  CardDraft& draft_;
  std::vector<MultiEntry>& entries_;
  std::vector<std::size_t> ofAdr_;  // numbers of entries
  std::vector<std::size_t> found_;
};

ContentLine parsed(const WaitingLine& waiting) {
  ContentLine line;
  const auto colon = parseHead(waiting.text, line);
  line.value = std::string_view(waiting.text).substr(std::min(colon, waiting.text.size() - 1) + 1);
  line.number = waiting.number;
  return line;
}

// True when a LABEL without group could be taken for that of another address.
bool isLabelAmbiguous(EntryWriter& entry) {
  const auto typeOf = [](const Text& label) {
    return label ? labelParameters(property_id::kAddress, *label, false).parameters
                 : std::string_view();
  };
  const auto own = typeOf(entry.label());
  if (entry.label() && own.empty()) return true;
  const auto* value = entry.card().valueOf(property_id::kAddress);
  const auto* all = value != nullptr ? std::get_if<MultiValuePtr>(value) : nullptr;
  if (all == nullptr) return false;
  return std::ranges::count_if((*all)->entries, [&](const MultiEntry& each) {
           return typeOf(each.label) == own;
         }) > 1;
}

// As the card wrote them, for as long as a reader makes the same of it.
void writeComponents(EntryWriter& entry, const Components& parts) {
  const auto verbatim = entry.verbatim();
  if (!verbatim.empty() && gives(verbatim, parts)) {
    const auto seven = sevenOf(verbatim);
    const bool isWhole = !entry.is30() || seven.size() == verbatim.size();
    entry.line().raw(isWhole ? verbatim : seven);
    if (!isWhole) entry.wrapVerbatim();
    return;
  }
  std::string_view separator;
  for (const auto part : parts) {
    entry.line().raw(separator).text(CardText(part).view());
    separator = ";";
  }
}

void setCountryCode(std::string_view code, Object& value) {
  Dictionary address = *value.dictionary();
  address.set(kABAddressCountryCodeKey, code);
  value = std::move(address);
}

}  // namespace

bool readAddress(const PropertyRow& row, const ContentLine& line, CardDraft& draft) {
  const auto split = splitAddress(line.value);
  const auto& parts = split.parts;
  Dictionary address;
  address.reserve(parts.size() + 2);
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
  auto label = labelOf(line);
  if (address.empty()) {
    if (!split.rest.empty()) return false;  // the whole line is kept, its label with it
    if (!label.empty()) addLabelAlone(label, line, draft);
    return true;
  }
  if (!label.empty()) address.set(kAddressLabelKey, std::move(label));
  draft.addEntry(row.property, std::move(address), line, {.ownKinds = bitOf(ParameterKind::Label)});
  if (!split.rest.empty()) {
    draft.preserveVerbatim(row.property, canonicalComponents(line.value, draft.facts.dialect));
  } else if (hasList(line.value, draft.facts.dialect)) {
    draft.preserveVerbatim(row.property, canonicalComponents(parts, draft.facts.dialect));
  }
  return true;
}

bool readAddressLabel(const PropertyRow& /*row*/, const ContentLine& line, CardDraft& draft) {
  if (line.encoding == Encoding::Base64) return false;
  const auto text = unescaped(line.value);
  const CardText shown(text);
  // What a writer would have to clean is no text of an address: the line is kept as it is.
  if (shown.isChanged() || !isPlainText(text)) return false;
  if (draft.addressLabels.size() == kMostLabelled) return false;
  const auto before = draft.values.multi(property_id::kAddress).entries.size();
  WaitingLine waiting{{}, line.number, before};
  appendPreserved(line, draft.facts.dialect, waiting.text);
  draft.addressLabels.push_back(std::move(waiting));
  return true;
}

void settleAddressLabels(CardDraft& draft) {
  auto& waiting = draft.addressLabels;
  if (waiting.empty()) return;
  AddressLabels labels(draft);
  std::erase_if(waiting, [&](const WaitingLine& each) { return labels.join(parsed(each)); });
  std::erase_if(waiting, [&](WaitingLine& each) {
    if (!labels.isBeside(parsed(each))) return false;
    draft.unmodelled.lines.push_back(std::move(each.text));
    return true;
  });
  std::size_t added = 0;
  for (const auto& each : waiting) {
    const auto line = parsed(each);
    addLabelAlone(unescaped(line.value), line, draft);
    draft.moveLastEntry(property_id::kAddress, each.entriesBefore + ++added);
  }
  waiting.clear();
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

  const CardText labelText(texts[kLabel]);
  const auto label = isPlainText(texts[kLabel]) ? labelText.view() : std::string_view();
  const bool isAlone = !label.empty() && entry.verbatim() == kLabelAlone &&
                       CardText(parts[kStreet]).view() == label &&
                       std::ranges::count_if(parts, saysNothing) == kComponents - 1;
  const auto code = texts[kCode];
  const bool hasCode = isCountryCode(code);
  const bool isGrouped = hasCode || (entry.is30() && !label.empty() && isLabelAmbiguous(entry));
  entry.start(isAlone && entry.is30() ? "LABEL" : "ADR",
              isGrouped ? EntryWriter::OwnLines::Yes : EntryWriter::OwnLines::No);
  if (!label.empty() && !entry.is30()) writeLabelParameter(label, entry.line());
  entry.line().raw(":");
  if (isAlone) {
    entry.is30() ? entry.line().text(label) : entry.line().raw(kLabelAlone);
  } else {
    writeComponents(entry, parts);
  }
  entry.end();
  if (!label.empty() && !isAlone && entry.is30()) {
    entry.startAnother("LABEL");
    entry.line().raw(":").text(label).end();
  }
  if (hasCode) entry.line().raw(entry.group()).raw(".X-ABADR:").raw(code).end();
  return texts.isExact() && texts.arePlain() && areBare && street && (hasCode || code.empty()) &&
         !label.empty() == texts.has(kLabel);
}

// The one that it was kept beside may have no line either.
bool lacksAddress(const PropertyRow& row, std::string_view /*line*/, PropertyWriter& card) {
  return card.valueOf(row.property) == nullptr || card.isInexact(row.property);
}

}  // namespace ox::vcard
