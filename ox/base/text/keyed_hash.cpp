#include "ox/base/text/keyed_hash.hpp"

#include "ox/base/checksum.hpp"
#include "ox/base/uuid.hpp"

namespace ox {

std::uint64_t keyedHash(std::string_view text) {
  static const auto key = randomBits();
  return checksum64(text, key);
}

}  // namespace ox
