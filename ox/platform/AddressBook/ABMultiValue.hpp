#pragma once

#include <cstdint>

#include "ox/base/export.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// A system multi-value: entries of value, label key and identifier, at most one of them primary. A
// cheap handle on immutable content; copied freely.
class OX_EXPORT ABMultiValue {
 public:
  explicit ABMultiValue(MultiValuePtr content);

  std::uint64_t count() const { return content_->entries.size(); }
  // Missing (an empty object, a missing text) when the index is out of range.
  Object valueAtIndex(std::uint64_t index) const;
  Text labelAtIndex(std::uint64_t index) const;
  Text identifierAtIndex(std::uint64_t index) const;
  std::optional<std::uint64_t> indexForIdentifier(TextView identifier) const;
  Text primaryIdentifier() const;
  const MultiValuePtr& content() const { return content_; }

 protected:
  MultiValuePtr content_;
};

// One that is still being put together. Not shared between threads.
class OX_EXPORT ABMutableMultiValue {
 public:
  static ABMutableMultiValue init() { return ABMutableMultiValue(); }
  static ABMutableMultiValue mutableCopy(const ABMultiValue& source);

  std::uint64_t count() const { return content_.entries.size(); }
  // Appends; the result is the entry's identifier, as long as this is not written: a record gives
  // an entry that it holds already the identifier it has there.
  Text addValue_withLabel(Object value, TextView label);
  // False when there is no such entry. The primary mark goes with its entry.
  bool removeValueAndLabelAtIndex(std::uint64_t index);
  Text identifierAtIndex(std::uint64_t index) const;
  // False when no entry has that identifier; a missing identifier takes the mark away.
  bool setPrimaryIdentifier(TextView identifier);
  // What has been put together so far, to be written to a record.
  MultiValuePtr content() const { return std::make_shared<const MultiValue>(content_); }

 private:
  ABMutableMultiValue() = default;

  MultiValue content_;
};

}  // namespace ox
