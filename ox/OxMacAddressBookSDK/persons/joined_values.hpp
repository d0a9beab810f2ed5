#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// How something that only the other of two records holds comes into what both hold together.
enum class JoinedBy : std::uint8_t {
  Value,  // as the value of a property that had none, or as one more of several
  Note,   // as a line of the note, since a record has one such value at most and keeps its own
  None,   // not at all: the label of an entry that the first record has under another one
};

struct JoinedValue {
  PropertyId property = 0;
  std::string text;  // for readers, on one line
  JoinedBy by = JoinedBy::Value;
};

// What two records of one person hold together: all of the first, and what the second one adds.
struct JoinedValues {
  PropertyBag values;
  std::vector<JoinedValue> added;
};

// Telephone numbers of the same digits are one, as are e-mail addresses but for case, and any other
// values that are equal. Parts of names are filled in as long as none contradicts. The first
// record's UID and what its card said of its values stay; what the other card said of a value that
// is taken over, and unmodelled lines that the first does not have, are added. Titles of properties
// in the note are the model's.
OX_EXPORT JoinedValues joinedValues(const PropertyBag& first, const PropertyBag& second);

}  // namespace ox
