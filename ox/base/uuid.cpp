#include "ox/base/uuid.hpp"

#include <cassert>
#include <cerrno>
#include <chrono>
#include <mutex>
#include <sys/random.h>
#include <system_error>

namespace ox {
namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";
constexpr std::size_t kTextLength = 36;

constexpr bool isDashPlace(std::size_t place) {
  return place == 8 || place == 13 || place == 18 || place == 23;
}

void fillRandom(std::uint8_t* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t got = ::getrandom(bytes, count, 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "getrandom");
    }
    bytes += got;
    count -= static_cast<std::size_t>(got);
  }
}

// Random bytes are drawn a page at a time: a system call for each identifier would be most of the
// cost of an import.
class RandomPool {
 public:
  std::uint64_t next() {
    const std::lock_guard lock(mutex_);
    if (used_ == words_.size()) {
      fillRandom(reinterpret_cast<std::uint8_t*>(words_.data()),
                 words_.size() * sizeof(words_.front()));
      used_ = 0;
    }
    assert(used_ < words_.size());
    return words_[used_++];
  }

 private:
  std::mutex mutex_;
  std::array<std::uint64_t, 512> words_{};
  std::size_t used_ = words_.size();
};

// Milliseconds (48 bits) and a 12-bit counter, as one number that only ever rises.
class RisingClock {
 public:
  std::uint64_t next() {
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::system_clock::now().time_since_epoch())
                         .count();
    const auto candidate = static_cast<std::uint64_t>(now) << 12U;
    const std::lock_guard lock(mutex_);
    assert(last_ != UINT64_MAX);
    last_ = candidate > last_ ? candidate : last_ + 1;
    return last_;
  }

 private:
  std::mutex mutex_;
  std::uint64_t last_ = 0;
};

constexpr std::uint8_t kNoDigit = 0xFF;

// The value of each character as a hexadecimal digit.
constexpr auto kDigitValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<std::uint8_t>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}();

std::uint8_t digitValue(char c) {
  return kDigitValues[static_cast<std::uint8_t>(c)];
}

}  // namespace

std::uint64_t randomBits() {
  static auto& pool = *new RandomPool;
  return pool.next();
}

Uuid makeUuid() {
  static auto& clock = *new RisingClock;
  const std::uint64_t time = clock.next();
  const std::uint64_t high = (time >> 12U) << 16U | 0x7000U | (time & 0x0FFFU);
  const std::uint64_t low = (randomBits() & 0x3FFFFFFFFFFFFFFFU) | 0x8000000000000000U;
  Uuid uuid{};
  for (std::size_t i = 0; i < 8; ++i) {
    uuid[i] = static_cast<std::uint8_t>(high >> (56U - 8U * i));
    uuid[8 + i] = static_cast<std::uint8_t>(low >> (56U - 8U * i));
  }
  return uuid;
}

std::string uuidText(const Uuid& uuid) {
  std::string text(kTextLength, '-');
  std::size_t at = 0;
  for (const auto byte : uuid) {
    if (isDashPlace(at)) ++at;
    text[at++] = kDigits[byte >> 4U];
    text[at++] = kDigits[byte & 0x0FU];
  }
  assert(at == kTextLength);
  return text;
}

std::optional<Uuid> uuidFromText(std::string_view text) {
  if (text.size() != kTextLength) return std::nullopt;
  Uuid uuid{};
  std::size_t at = 0;
  for (auto& byte : uuid) {
    if (isDashPlace(at) && text[at++] != '-') return std::nullopt;
    const auto high = digitValue(text[at++]);
    const auto low = digitValue(text[at++]);
    if (high == kNoDigit || low == kNoDigit) return std::nullopt;
    byte = static_cast<std::uint8_t>(high << 4U | low);
  }
  assert(at == kTextLength);
  return uuid;
}

}  // namespace ox
