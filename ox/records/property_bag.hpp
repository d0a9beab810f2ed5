#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/base/object.hpp"
#include "ox/records/property_types.hpp"

namespace ox {

// One entry of a multi-value. The identifier is unique within its multi-value and survives edits of
// the other entries.
struct MultiEntry {
  std::uint64_t identifier = 0;
  Text label;
  Object value;

  bool operator==(const MultiEntry&) const = default;
};

// A multi-value as records hold it: entries in order, at most one of them primary (0: none).
struct OX_EXPORT MultiValue {
  std::vector<MultiEntry> entries;
  std::uint64_t primary = 0;

  // Appends with a fresh identifier, which is the result.
  std::uint64_t add(Object value, Text label);

  bool operator==(const MultiValue&) const = default;
};

using MultiValuePtr = std::shared_ptr<const MultiValue>;

// What a property holds: one object (missing: nothing) or a multi-value (null: nothing).
using PropertyValue = std::variant<Object, MultiValuePtr>;

OX_EXPORT bool isMissing(const PropertyValue& value);
// By content; a multi-value's entry identifiers count. Missing values are the same.
OX_EXPORT bool sameValue(const PropertyValue& a, const PropertyValue& b);
// What a host can see of it: entries, labels and which one is primary, whatever the identifiers.
OX_EXPORT bool looksTheSame(const PropertyValue& a, const PropertyValue& b);

// Every property that one record holds, ordered by number. A value; never holds a missing one.
class OX_EXPORT PropertyBag {
 public:
  using Entry = std::pair<PropertyId, PropertyValue>;

  // Borrowed; null when the record does not hold it.
  const PropertyValue* find(PropertyId id) const;
  // Borrowed; a missing value when the record does not hold it.
  const PropertyValue& value(PropertyId id) const;
  // Shorthand for a held string: borrowed, null when missing or of another kind.
  const std::string* text(PropertyId id) const;
  // A missing value takes the property away.
  void set(PropertyId id, PropertyValue value);
  // For building a bag in order: the number is higher than every one that is held, the value is not
  // missing.
  template <typename Value>
  void append(PropertyId id, Value&& value) {
    assert(entries_.empty() || entries_.back().first < id);
    entries_.emplace_back(id, std::forward<Value>(value));
    assert(!isMissing(entries_.back().second));
  }
  const std::vector<Entry>& entries() const { return entries_; }
  bool empty() const { return entries_.empty(); }
  // Makes room for so many properties.
  void reserve(std::size_t count) { entries_.reserve(count); }

 private:
  std::vector<Entry> entries_;
};

// How many bytes of text and data the values hold, about what they take in memory beyond their
// count.
OX_EXPORT std::size_t roughSize(const PropertyBag& properties);

// True when the value has the shape that the type asks for (a string for a string property,
// elements of the base type in a multi-value) and can be stored; a missing value always fits.
OX_EXPORT bool fitsType(const PropertyValue& value, ABPropertyType type);

}  // namespace ox
