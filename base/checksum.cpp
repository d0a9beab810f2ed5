#include "base/checksum.hpp"

#include <xxhash.h>

namespace ox {

std::uint64_t checksum64(std::string_view bytes) {
  return XXH3_64bits(bytes.data(), bytes.size());
}

}  // namespace ox
