#pragma once

#include <cstddef>
#include <string>

#include "ox/platform/AddressBook/ABAddressBook.hpp"

// Values of records as texts and numbers, for tests that compare them.

namespace ox::kills {

inline std::shared_ptr<ABAddressBook> records() {
  return ABAddressBook::sharedAddressBook();
}

// Whether the record is in the store still.
inline bool isThere(const ABRecord& record) {
  return records()->recordForUniqueId(record.uniqueId()) != nullptr;
}

// Empty when the record does not hold it.
inline std::string textOf(const ABRecord& record, TextView property) {
  const auto value = record.valueForProperty(property);
  const auto* object = std::get_if<Object>(&value);
  return object == nullptr ? "" : object->toText().value_or("");
}

// Empty when the record does not hold it.
inline MultiValue entriesOf(const ABRecord& record, TextView property) {
  const auto value = record.valueForProperty(property);
  const auto* many = std::get_if<MultiValuePtr>(&value);
  return many != nullptr && *many ? **many : MultiValue();
}

}  // namespace ox::kills
