#include "ox/base/checksum.hpp"

#include <new>
#include <xxhash.h>

namespace ox {
namespace {

std::string digitsOf(const XXH128_hash_t& hash) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  XXH128_canonical_t canonical;
  XXH128_canonicalFromHash(&canonical, hash);
  std::string text;
  for (const unsigned char byte : canonical.digest) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

}  // namespace

std::uint64_t checksum64(std::string_view bytes) {
  return XXH3_64bits(bytes.data(), bytes.size());
}

std::uint64_t checksum64(std::string_view bytes, std::uint64_t key) {
  return XXH3_64bits_withSeed(bytes.data(), bytes.size(), key);
}

std::string checksum128(std::string_view bytes) {
  return digitsOf(XXH3_128bits(bytes.data(), bytes.size()));
}

// The library makes it, whose version tells how large it is.
struct Checksum128::State {
  State() : hash(XXH3_createState()) {
    if (hash == nullptr) throw std::bad_alloc();
  }
  State(const State&) = delete;
  State& operator=(const State&) = delete;
  ~State() { XXH3_freeState(hash); }

  XXH3_state_t* hash;
};

Checksum128::Checksum128() : state_(std::make_unique<State>()) {
  XXH3_128bits_reset(state_->hash);
}

Checksum128::~Checksum128() = default;

void Checksum128::add(std::string_view bytes) {
  XXH3_128bits_update(state_->hash, bytes.data(), bytes.size());
}

std::string Checksum128::text() const {
  return digitsOf(XXH3_128bits_digest(state_->hash));
}

}  // namespace ox
