#include "ox/records/property_bag.hpp"

#include <algorithm>
#include <cassert>

#include "ox/base/uuid.hpp"

namespace ox {
namespace {

bool idBefore(const PropertyBag::Entry& entry, PropertyId id) {
  return entry.first < id;
}

constexpr int kMaxDepth = 32;  // of arrays and dictionaries in one another
constexpr std::size_t kMaxEntries = 10'000;

// Neither a day that does not exist nor parts that mean nothing together.
bool isStorable(const Date& date) {
  // Nearly every one is a day and no more: its text is read as that very day.
  const bool isDay =
      date.year && date.month && date.day && !date.secondOfDay && !date.utcOffsetMinutes;
  if (isDay) return date.isValid();
  return Date::fromText(date.toText()) == date;
}

// False for what no file can hold: pictures, host objects, dates that are none, nesting without
// end.
bool isStorable(const Object& value, int depth) {
  if (value.as<ImagePtr>() != nullptr || value.as<Object::HostObjectPtr>() != nullptr) return false;
  if (const auto* date = value.as<Date>()) return isStorable(*date);
  if (const auto* array = value.array()) {
    return depth < kMaxDepth &&
           std::all_of(array->begin(), array->end(),
                       [&](const Object& element) { return isStorable(element, depth + 1); });
  }
  if (const auto* dictionary = value.dictionary()) {
    const auto& entries = dictionary->entries();
    return depth < kMaxDepth && entries.size() <= kMaxEntries &&
           std::all_of(entries.begin(), entries.end(), [&](const Dictionary::Entry& entry) {
             return isStorable(entry.second, depth + 1);
           });
  }
  return true;
}

bool fitsBase(const Object& value, std::int32_t type) {
  switch (type) {
    case kABStringProperty:
      return value.text() != nullptr;
    case kABIntegerProperty:
      return value.as<std::int64_t>() != nullptr;
    case kABRealProperty:
      return value.as<double>() != nullptr;
    case kABDateProperty:
      return value.as<Date>() != nullptr && isStorable(value, 0);
    case kABArrayProperty:
      return value.array() != nullptr && isStorable(value, 0);
    case kABDictionaryProperty:
      return value.dictionary() != nullptr && isStorable(value, 0);
    case kABDataProperty:
      return value.as<Data>() != nullptr;
    default:
      return false;
  }
}

std::size_t sizeOf(const Object& value) {
  if (const auto* text = value.text()) return text->size();
  if (const auto* data = value.as<Data>()) return (*data)->size();
  std::size_t size = 0;
  if (const auto* array = value.array()) {
    for (const auto& element : *array) size += sizeOf(element);
  } else if (const auto* dictionary = value.dictionary()) {
    for (const auto& [key, held] : dictionary->entries()) size += key.size() + sizeOf(held);
  }
  return size;
}

}  // namespace

std::uint64_t MultiValue::add(Object value, Text label) {
  std::uint64_t identifier = 0;
  while (identifier == 0) identifier = randomBits();
  entries.push_back({identifier, std::move(label), std::move(value)});
  return identifier;
}

bool isMissing(const PropertyValue& value) {
  if (const auto* single = std::get_if<Object>(&value)) return single->isMissing();
  return std::get<MultiValuePtr>(value) == nullptr;
}

bool sameValue(const PropertyValue& a, const PropertyValue& b) {
  if (isMissing(a) || isMissing(b)) return isMissing(a) && isMissing(b);
  if (a.index() != b.index()) return false;
  if (const auto* single = std::get_if<Object>(&a)) return *single == std::get<Object>(b);
  return *std::get<MultiValuePtr>(a) == *std::get<MultiValuePtr>(b);
}

bool looksTheSame(const PropertyValue& a, const PropertyValue& b) {
  if (a.index() != b.index()) return false;
  if (const auto* single = std::get_if<Object>(&a)) return *single == std::get<Object>(b);
  assert(std::get<MultiValuePtr>(a) && std::get<MultiValuePtr>(b));
  const auto& left = *std::get<MultiValuePtr>(a);
  const auto& right = *std::get<MultiValuePtr>(b);
  return std::equal(left.entries.begin(), left.entries.end(), right.entries.begin(),
                    right.entries.end(), [&](const MultiEntry& one, const MultiEntry& other) {
                      return one.label == other.label && one.value == other.value &&
                             (one.identifier == left.primary) ==
                                 (other.identifier == right.primary);
                    });
}

const PropertyValue* PropertyBag::find(PropertyId id) const {
  const auto found = std::lower_bound(entries_.begin(), entries_.end(), id, idBefore);
  return found != entries_.end() && found->first == id ? &found->second : nullptr;
}

const PropertyValue& PropertyBag::value(PropertyId id) const {
  static const PropertyValue missing;
  const auto* held = find(id);
  return held != nullptr ? *held : missing;
}

const std::string* PropertyBag::text(PropertyId id) const {
  const auto* value = find(id);
  const auto* single = value != nullptr ? std::get_if<Object>(value) : nullptr;
  return single != nullptr ? single->text() : nullptr;
}

void PropertyBag::set(PropertyId id, PropertyValue value) {
  assert(id != 0);
  const auto found = std::lower_bound(entries_.begin(), entries_.end(), id, idBefore);
  const bool held = found != entries_.end() && found->first == id;
  assert(id != 0 && (found == entries_.begin() || std::prev(found)->first < id));
  if (isMissing(value)) {
    if (held) entries_.erase(found);
  } else if (held) {
    found->second = std::move(value);
  } else {
    entries_.emplace(found, id, std::move(value));
  }
}

std::size_t roughSize(const PropertyBag& properties) {
  std::size_t size = 0;
  for (const auto& [id, value] : properties.entries()) {
    if (const auto* single = std::get_if<Object>(&value)) {
      size += sizeOf(*single);
      continue;
    }
    for (const auto& entry : std::get<MultiValuePtr>(value)->entries) {
      size += sizeOf(entry.value) + (entry.label ? entry.label->size() : 0);
    }
  }
  return size;
}

bool fitsType(const PropertyValue& value, ABPropertyType type) {
  if (isMissing(value)) return true;
  const bool multi = (type & kABMultiValueMask) != 0;
  const auto base = type & ~static_cast<std::int32_t>(kABMultiValueMask);
  if (const auto* single = std::get_if<Object>(&value)) return !multi && fitsBase(*single, base);
  const auto& entries = std::get<MultiValuePtr>(value)->entries;
  return multi && std::all_of(entries.begin(), entries.end(),
                              [&](const MultiEntry& entry) { return fitsBase(entry.value, base); });
}

}  // namespace ox
