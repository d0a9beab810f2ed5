#include "ox/OxMacAddressBookSDK/_ABPerson/person_entries.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ox/OxMacAddressBookSDK/_ABPerson/convert/address.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/name_tables.hpp"
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
    for (const auto& [name, value] : held->entries()) {
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

}  // namespace

std::string labelKeyOf(std::string_view word) {
  return std::string(names::labelKeyOf(word));
}

PersonEntries::PersonEntries(_ABPerson& person, const OxPropertyPtr& property)
    : person_(person),
      storeName_(names::storeNameOf(property->name())),
      elementType_(property->subValueType()) {
  assert(property->valueType() == value_type::kMultiple);
  const auto stored = person_.valueForProperty(storeName_);
  if (const auto* held = std::get_if<MultiValuePtr>(&stored); held && *held) value_ = **held;
  needsMain_ = value_.entries.empty() || value_.primary != 0;
}

bool PersonEntries::holdsLabel(std::string_view label) const {
  return std::ranges::any_of(value_.entries,
                             [&](const MultiEntry& entry) { return hasLabel(entry, label); });
}

void PersonEntries::add(const Object& value, const Text& label) {
  auto stored = convert::storedFromElement(value, elementType_);
  if (!stored.isMissing()) insert(std::move(stored), label, value_.entries.size());
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
  auto stored = convert::storedFromElement(value, elementType_);
  const auto place = takeOut(label);
  if (stored.isMissing()) return;
  insert(std::move(stored), label, place);
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

void PersonEntries::addAddress(std::string_view field, const std::string& text, const Text& label) {
  insert(withField(Object(), convert::storedAddressKeyOf(field), text), label,
         value_.entries.size());
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
  auto address = withField(entry->value, convert::storedAddressKeyOf(field), text);
  if (!isEmptyAddress(address)) {
    entry->value = std::move(address);
    return;
  }
  if (entry->identifier == value_.primary) value_.primary = 0;
  value_.entries.erase(entry);
}

bool PersonEntries::write() {
  if (value_.entries.empty()) return person_.setValue_forProperty(Object(), storeName_);
  if (needsMain_ && value_.primary == 0) value_.primary = value_.entries.front().identifier;
  return person_.setValue_forProperty(std::make_shared<const MultiValue>(value_), storeName_);
}

}  // namespace ox
