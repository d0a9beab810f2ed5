#include "ox/OxMacAddressBookSDK/_ABPerson/person_entries.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ox/OxMacAddressBookSDK/_ABPerson/convert/address.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/name_tables.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/text/case.hpp"
#include "ox/records/property_keys.hpp"

namespace ox {
namespace {

bool hasLabel(const MultiEntry& entry, std::string_view label) {
  if (!entry.label) return false;
  return *entry.label == label ||
         equalsIgnoringCase(names::labelWordOf(*entry.label), names::labelWordOf(label));
}

// What the address has besides its fields stays: other programs' keys, and a country code, which is
// none of ours to invent.
Dictionary withField(const Object& address, std::string_view key, const Text& text) {
  Dictionary changed;
  if (const auto* held = address.dictionary()) {
    const bool isSame = held->get(key).toText() == text;
    for (const auto& [name, value] : held->entries()) {
      // What is written on an envelope is not true of another place.
      if (name == kAddressLabelKey && !isSame) continue;
      if (name != key || text) changed.set(name, value);
    }
  }
  if (text) changed.set(key, *text);
  return changed;
}

// A country code alone says of no place where it is.
bool isEmptyAddress(const Dictionary& address) {
  return std::ranges::all_of(
      address.entries(), [](const auto& entry) { return entry.first == kABAddressCountryCodeKey; });
}

// The fields of an address as somebody has written them, and what else it holds. A code that stood
// beside another country is not true any more.
Dictionary withFieldsOf(const Object& address, const Object& written) {
  Dictionary changed;
  const auto* held = address.dictionary();
  const auto* fields = written.dictionary();
  if (fields == nullptr) return changed;
  const auto isField = [](std::string_view key) {
    return key == kABAddressStreetKey || key == kABAddressCityKey || key == kABAddressStateKey ||
           key == kABAddressZIPKey || key == kABAddressCountryKey;
  };
  if (held != nullptr) {
    const bool sameCountry = held->get(kABAddressCountryKey) == fields->get(kABAddressCountryKey);
    for (const auto& [key, value] : held->entries()) {
      // Nor is what is written on an envelope.
      const bool isUntrue =
          key == kAddressLabelKey || (key == kABAddressCountryCodeKey && !sameCountry);
      if (!isField(key) && !isUntrue) changed.set(key, value);
    }
  }
  for (const auto& [key, value] : fields->entries()) {
    if (isField(key)) changed.set(key, value);
  }
  return changed;
}

}  // namespace

std::string labelKeyOf(std::string_view word) {
  return std::string(names::labelKeyOf(word));
}

PersonEntries::PersonEntries(_ABPerson& person, const OxPropertyPtr& property) : person_(person) {
  if (!property || property->valueType() != value_type::kMultiple) {
    failures::noticeRefusal("only a property of several values has entries",
                            person_.uniqueId().value_or(""));
    return;
  }
  storeName_ = names::storeNameOf(property->name());
  elementType_ = property->subValueType();
  const auto stored = person_.valueForProperty(storeName_);
  if (const auto* held = std::get_if<MultiValuePtr>(&stored); held && *held) value_ = **held;
  needsMain_ = value_.entries.empty() || value_.primary != 0;
}

bool PersonEntries::holdsLabel(std::string_view label) const {
  return std::ranges::any_of(value_.entries,
                             [&](const MultiEntry& entry) { return hasLabel(entry, label); });
}

// Missing, and noticed, for a value of another kind than elements of the property are.
std::optional<Object> PersonEntries::storedFrom(const Object& value) const {
  auto stored = convert::storedFromElement(value, elementType_);
  const bool isNothing = value.isMissing() || value.toText() == Text("");
  if (!stored.isMissing() || isNothing) return stored;
  failures::noticeRefusal("a value does not fit the entries of " + storeName_,
                          person_.uniqueId().value_or(""));
  return std::nullopt;
}

void PersonEntries::add(const Object& value, const Text& label) {
  auto stored = storedFrom(value);
  if (stored && !stored->isMissing()) insert(*std::move(stored), label, value_.entries.size());
}

void PersonEntries::replaceAll(const Object& value) {
  replace(std::nullopt, value);
}

void PersonEntries::replaceLabelled(const std::string& label, const Object& value) {
  replace(label, value);
}

// Those of the label, or all without one.
void PersonEntries::replace(const Text& label, const Object& value) {
  const bool hadMain = value_.primary != 0;
  auto stored = storedFrom(value);
  if (!stored) return;
  const auto place = takeOut(label);
  if (stored->isMissing()) return;
  insert(*std::move(stored), label, place);
  // The new entry follows the main one that it replaced, and whatever stands alone is main.
  const bool replacedMain = hadMain && value_.primary == 0;
  if (replacedMain || !label) value_.primary = value_.entries[place].identifier;
}

// The result is where the first one stood.
std::size_t PersonEntries::takeOut(const Text& label) {
  std::vector<MultiEntry> others;
  auto place = value_.entries.size();
  for (auto& entry : value_.entries) {
    if (label && !hasLabel(entry, *label)) {
      others.push_back(std::move(entry));
      continue;
    }
    place = std::min(place, others.size());
    if (entry.identifier == value_.primary) value_.primary = 0;
  }
  value_.entries = std::move(others);
  return std::min(place, value_.entries.size());
}

void PersonEntries::insert(Object stored, const Text& label, std::size_t place) {
  assert(place <= value_.entries.size());
  value_.add(std::move(stored), label);
  std::rotate(value_.entries.begin() + static_cast<std::ptrdiff_t>(place), value_.entries.end() - 1,
              value_.entries.end());
}

// Empty, and noticed, for a name that is no field's.
std::string_view PersonEntries::fieldKey(std::string_view field) const {
  const auto key = convert::storedAddressKeyOf(field);
  if (key.empty()) {
    failures::noticeRefusal("addresses have no field " + std::string(field),
                            person_.uniqueId().value_or(""));
  }
  return key;
}

void PersonEntries::addAddress(std::string_view field, const std::string& text, const Text& label) {
  const auto key = fieldKey(field);
  if (!key.empty()) insert(withField(Object(), key, text), label, value_.entries.size());
}

// The end when there is none.
std::vector<MultiEntry>::iterator PersonEntries::addressOf(const Text& label) {
  auto& entries = value_.entries;
  if (label) {
    return std::ranges::find_if(entries,
                                [&](const MultiEntry& entry) { return hasLabel(entry, *label); });
  }
  const auto main = std::ranges::find(entries, value_.primary, &MultiEntry::identifier);
  return main != entries.end() ? main : entries.begin();
}

void PersonEntries::setAddressField(std::string_view field, const Text& text, const Text& label) {
  const auto entry = addressOf(label);
  if (entry == value_.entries.end()) {
    if (text) addAddress(field, *text, label);
    return;
  }
  const auto key = fieldKey(field);
  if (key.empty()) return;
  auto address = withField(entry->value, key, text);
  if (!isEmptyAddress(address)) {
    entry->value = std::move(address);
    return;
  }
  if (entry->identifier == value_.primary) value_.primary = 0;
  value_.entries.erase(entry);
}

std::vector<std::uint64_t> PersonEntries::identifiers() const {
  std::vector<std::uint64_t> identifiers;
  for (const auto& entry : value_.entries) identifiers.push_back(entry.identifier);
  return identifiers;
}

// Missing when there is nothing of it to write.
std::optional<MultiEntry> PersonEntries::arranged(const Arranged& entry) const {
  const auto known = std::ranges::find(value_.entries, entry.was, &MultiEntry::identifier);
  const bool isKnown = entry.was != 0 && known != value_.entries.end();
  MultiEntry result;
  if (isKnown) result = *known;
  result.label = entry.label;
  if (entry.value.isMissing()) return isKnown ? std::optional(std::move(result)) : std::nullopt;
  auto stored = storedFrom(entry.value);
  if (!stored || stored->isMissing()) return std::nullopt;
  const bool isAddress = elementType_ == value_type::kAddress;
  result.value = isAddress ? withFieldsOf(result.value, *stored) : *std::move(stored);
  return result;
}

void PersonEntries::arrange(const std::vector<Arranged>& entries,
                            const std::vector<std::uint64_t>& shown) {
  MultiValue arrangedValue;
  for (const auto& wanted : entries) {
    auto entry = arranged(wanted);
    if (!entry) continue;
    if (entry->identifier == 0) {
      // Beside those that are not arranged yet.
      auto both = value_;
      entry->identifier = both.add({}, {});
      value_.entries.push_back({entry->identifier, {}, {}});
    }
    arrangedValue.entries.push_back(*std::move(entry));
  }
  const auto isArranged = [&](std::uint64_t identifier) {
    return std::ranges::find(arrangedValue.entries, identifier, &MultiEntry::identifier) !=
           arrangedValue.entries.end();
  };
  for (auto& entry : value_.entries) {
    const bool wasShown = std::ranges::find(shown, entry.identifier) != shown.end();
    if (!wasShown && !isArranged(entry.identifier)) {
      arrangedValue.entries.push_back(std::move(entry));
    }
  }
  arrangedValue.primary = isArranged(value_.primary) ? value_.primary : 0;
  value_ = std::move(arrangedValue);
}

bool PersonEntries::write() {
  if (storeName_.empty()) return false;
  if (value_.entries.empty()) return person_.setValue_forProperty(Object(), storeName_);
  if (needsMain_ && value_.primary == 0) value_.primary = value_.entries.front().identifier;
  return person_.setValue_forProperty(std::make_shared<const MultiValue>(value_), storeName_);
}

}  // namespace ox
