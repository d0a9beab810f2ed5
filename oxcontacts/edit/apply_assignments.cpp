#include "oxcontacts/edit/apply.hpp"

#include <algorithm>
#include <array>

#include "ox/OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/name_tables.hpp"
#include "ox/base/text/case.hpp"
#include "ox/records/property_keys.hpp"

namespace ox::program {
namespace {

struct PartRow {
  std::string_view part;
  std::string_view key;
};

constexpr std::array kAddressParts = {
    PartRow{"street", kABAddressStreetKey},   PartRow{"city", kABAddressCityKey},
    PartRow{"state", kABAddressStateKey},     PartRow{"zip", kABAddressZIPKey},
    PartRow{"country", kABAddressCountryKey},
};

// The stored entries of a property while they are changed. Through the model an address would lose
// what the model does not know and gain a country code; those that are not touched stay as they
// are. An entry that is written as it stood keeps its identifier: the store sees to that.
struct Entries {
  MultiValue value;
  bool needsMain = false;
};

Entries entriesOf(const _ABPerson& person, std::string_view storeName) {
  Entries entries;
  const auto stored = person.valueForProperty(storeName);
  if (const auto* held = std::get_if<MultiValuePtr>(&stored); held && *held) entries.value = **held;
  entries.needsMain = entries.value.entries.empty() || entries.value.primary != 0;
  return entries;
}

void write(Entries entries, _ABPerson& person, std::string_view storeName) {
  auto& value = entries.value;
  if (value.entries.empty()) {
    person.setValue_forProperty(Object(), storeName);
    return;
  }
  if (entries.needsMain && value.primary == 0) value.primary = value.entries.front().identifier;
  person.setValue_forProperty(std::make_shared<const MultiValue>(std::move(value)), storeName);
}

bool hasLabel(const MultiEntry& entry, const Text& key) {
  if (!entry.label || !key) return false;
  return *entry.label == *key ||
         equalsIgnoringCase(names::labelWordOf(*entry.label), names::labelWordOf(*key));
}

// The blanks of a built-in word need not be typed. A label of the person's own that stands there
// the way it was typed is meant nevertheless.
Text meantLabel(const Assignment& assignment, const MultiValue& value) {
  const auto& typed = assignment.typedLabel;
  const auto& key = assignment.label;
  if (!typed || equalsIgnoringCase(*typed, names::labelWordOf(*key))) return key;
  const bool stands = std::ranges::any_of(
      value.entries, [&](const MultiEntry& entry) { return hasLabel(entry, typed); });
  return stands ? typed : key;
}

// Takes out the entries of the label, or all; the result is where the first one stood.
std::size_t takeOut(const Text& label, MultiValue& value) {
  std::vector<MultiEntry> kept;
  std::size_t place = value.entries.size();
  for (auto& entry : value.entries) {
    if (label && !hasLabel(entry, label)) {
      kept.push_back(std::move(entry));
      continue;
    }
    place = std::min(place, kept.size());
    if (entry.identifier == value.primary) value.primary = 0;
  }
  value.entries = std::move(kept);
  return std::min(place, value.entries.size());
}

// The result is its identifier.
std::uint64_t insertNew(const Assignment& assignment, Object stored, std::size_t place,
                        MultiValue& value) {
  const auto identifier = value.add(std::move(stored), assignment.label);
  std::rotate(value.entries.begin() + static_cast<std::ptrdiff_t>(place), value.entries.end() - 1,
              value.entries.end());
  return identifier;
}

void applyWhole(const Assignment& assignment, MultiValue& value) {
  const bool hadMain = value.primary != 0;
  auto stored = convert::storedFromElement(assignment.value, assignment.property->subValueType());
  const auto end = value.entries.size();
  const auto place = assignment.adds ? end : takeOut(assignment.label, value);
  if (stored.isMissing()) return;
  const auto added = insertNew(assignment, std::move(stored), place, value);
  // The new entry follows the main one that it replaced, and whatever stood alone is main.
  if (hadMain && value.primary == 0) value.primary = added;
  if (!assignment.adds && !assignment.label) value.primary = added;
}

// The address that a part belongs to; the end when it is yet to be made.
std::vector<MultiEntry>::iterator addressFor(const Assignment& assignment, MultiValue& value) {
  auto& entries = value.entries;
  if (assignment.adds) return entries.end();
  if (assignment.label) {
    return std::ranges::find_if(
        entries, [&](const MultiEntry& entry) { return hasLabel(entry, assignment.label); });
  }
  const auto main = std::ranges::find(entries, value.primary, &MultiEntry::identifier);
  return main != entries.end() ? main : entries.begin();
}

// What the address has besides its parts stays: other programs' keys, and a country code, which is
// none of ours to invent.
Dictionary withPart(const Object& address, std::string_view key, const Object& text) {
  Dictionary changed;
  if (const auto* held = address.dictionary()) {
    for (const auto& [name, value] : held->entries()) {
      if (name != key || !text.isMissing()) changed.set(name, value);
    }
  }
  if (!text.isMissing()) changed.set(key, text);
  return changed;
}

bool isEmpty(const Dictionary& address) {
  return std::ranges::all_of(
      address.entries(), [](const auto& entry) { return entry.first == kABAddressCountryCodeKey; });
}

void applyAddressPart(const Assignment& assignment, MultiValue& value) {
  const auto row = std::ranges::find(kAddressParts, assignment.part, &PartRow::part);
  auto entry = addressFor(assignment, value);
  if (entry == value.entries.end()) {
    if (assignment.value.isMissing()) return;
    insertNew(assignment, Dictionary(), value.entries.size(), value);
    entry = value.entries.end() - 1;
  }
  auto address = withPart(entry->value, row->key, assignment.value);
  if (!isEmpty(address)) {
    entry->value = std::move(address);
    return;
  }
  if (entry->identifier == value.primary) value.primary = 0;
  value.entries.erase(entry);
}

Object nameWithPart(const Assignment& assignment, const _ABPerson& person) {
  const auto name = person.nameValue()->value().host<OxObjectPersonName>();
  const auto part = [&](std::string_view which, const Text& old) {
    return assignment.part == which ? assignment.value.toText() : old;
  };
  return OxObjectPersonName::initWithFirst_middle_last(
      part("first", name->first()), part("middle", name->middle()), part("last", name->last()));
}

void applySingle(const Assignment& assignment, _ABPerson& person) {
  const auto value = assignment.part.empty() ? assignment.value : nameWithPart(assignment, person);
  person.setValue_byProperty(person.singleValueByMacValue_property(value, assignment.property),
                             assignment.property);
}

}  // namespace

std::vector<Assignment> parseAssignments(const std::vector<std::string>& texts) {
  std::vector<Assignment> assignments;
  assignments.reserve(texts.size());
  for (const auto& text : texts) assignments.push_back(parseAssignment(text));
  return assignments;
}

void apply(const std::vector<Assignment>& assignments, _ABPerson& person) {
  for (auto assignment : assignments) {
    if (assignment.property->valueType() != value_type::kMultiple) {
      applySingle(assignment, person);
      continue;
    }
    const auto storeName = names::storeNameOf(assignment.property->name());
    auto entries = entriesOf(person, storeName);
    assignment.label = meantLabel(assignment, entries.value);
    if (assignment.part.empty()) {
      applyWhole(assignment, entries.value);
    } else {
      applyAddressPart(assignment, entries.value);
    }
    write(std::move(entries), person, storeName);
  }
}

}  // namespace ox::program
