#include "ox/base/checksum.hpp"

#include <xxhash.h>

namespace ox {

std::uint64_t checksum64(std::string_view bytes) {
  return XXH3_64bits(bytes.data(), bytes.size());
}

std::uint64_t checksum64(std::string_view bytes, std::uint64_t key) {
  return XXH3_64bits_withSeed(bytes.data(), bytes.size(), key);
}

std::string checksum128(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  XXH128_canonical_t canonical;
  XXH128_canonicalFromHash(&canonical, XXH3_128bits(bytes.data(), bytes.size()));
  std::string text;
  for (const unsigned char byte : canonical.digest) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace ox
