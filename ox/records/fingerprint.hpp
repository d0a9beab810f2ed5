#pragma once

#include <cstdint>

#include "ox/records/property_bag.hpp"

namespace ox {

// A number for what a record says: equal for equal values and picture, whatever the identifiers of
// its multi-value entries and the UID of the card it came from. Unequal contents may share one, if
// very rarely: compare before you believe it.
std::uint64_t contentFingerprint(const PropertyBag& properties, const Data& image);
// The same from the picture's checksum: checksum64 of its bytes, 0 without one.
std::uint64_t contentFingerprint(const PropertyBag& properties, std::uint64_t pictureChecksum);
// Of the properties alone, and of all but one.
std::uint64_t fingerprintWithout(PropertyId leftOut, const PropertyBag& properties);

// Of one object that a record may hold.
std::uint64_t valueFingerprint(const Object& value);

// The comparison that the fingerprint stands for.
bool sameContent(const PropertyBag& a, const PropertyBag& b);

}  // namespace ox
