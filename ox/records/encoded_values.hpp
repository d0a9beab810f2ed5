#pragma once

#include <string>
#include <vector>

#include "ox/base/text.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// The values of a record as they go into a store, and what a store asks of them beside. Whoever has
// made values turns them into this while they are in the processor's cache: walked again later, by
// another thread, they cost several times as much.
struct EncodedValues {
  std::string bytes;               // of encodeProperties
  Text cardUid;                    // property_id::kCardUid
  std::vector<PropertyId> custom;  // the custom properties among them
};

// Of values that are clean and fit their properties.
EncodedValues encodedValues(const PropertyBag& properties);
std::vector<PropertyId> customPropertiesOf(const PropertyBag& properties);

// What is wrong with the first value that does not fit its property; empty when all do.
std::string misfitOf(const PropertyBag& properties);

}  // namespace ox
