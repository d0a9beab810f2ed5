#pragma once

#include <string>

#include "ox/base/data.hpp"
#include "ox/records/property_bag.hpp"

// The values that a ValueConflict holds (card_merge.hpp). Empty: none.

namespace ox::sync {

// The name of a group as it stands, any other as encodeProperties gives a bag of it alone.
std::string encodedSingle(PropertyId property, const PropertyValue& value);
// One without value is none.
std::string encodedEntry(PropertyId property, MultiEntry entry);
// An unmodelled line, which is the value of the entry.
std::string encodedLine(const MultiEntry& line);
std::string encodedPhoto(const Data& photo);

}  // namespace ox::sync
