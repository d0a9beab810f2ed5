#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "ox/records/damaged_bytes.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {

// The stored form of a record's properties: one version byte, then each property as its number (0
// and the name and type for a custom one) and a tagged value, numbers as LEB128, then the XXH3
// checksum of all before it, little endian. Images and host objects cannot be stored.
std::string encodeProperties(const PropertyBag& properties);

// The bytes are not what encodeProperties wrote.
class OX_EXPORT DamagedProperties : public DamagedBytes {
 public:
  using DamagedBytes::DamagedBytes;
};

// Throws DamagedProperties, also when the bytes hold more properties than that. Registers custom
// properties that are not known yet.
PropertyBag decodeProperties(std::string_view bytes, std::size_t mostProperties = SIZE_MAX);

}  // namespace ox
