#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/records/damaged_bytes.hpp"

namespace ox {

// A link of a group to what stands in it: the row of that, and the number of the link.
struct NumberedLink {
  std::int64_t child = 0;
  std::int64_t number = 0;

  bool operator==(const NumberedLink&) const = default;
};

using NumberedLinks = std::vector<NumberedLink>;

// The bytes are not what encodeLinks wrote.
class OX_EXPORT DamagedLinks : public DamagedBytes {
 public:
  using DamagedBytes::DamagedBytes;
};

// The stored form of a list of links, in their order: how many there are, then of each how far row
// and number are from those before it (see packed_bytes.hpp). Of persons that were added one after
// another to a group a link takes two bytes.
std::string encodeLinks(const NumberedLinks& links);
// Throws DamagedLinks.
NumberedLinks decodeLinks(std::string_view bytes);

}  // namespace ox
