#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

#include "ox/base/checksum.hpp"

namespace ox {

static_assert(std::endian::native == std::endian::little, "the stored form is little endian");

// The frame of small stored lists: one version byte, numbers as LEB128, texts behind their lengths,
// then the XXH3 checksum of all before it, little endian. A number that may be below 0 has its sign
// in the lowest bit, so that small ones stay short.
class PackedWriter {
 public:
  explicit PackedWriter(char version) : bytes_{version} {}

  void number(std::uint64_t value) {
    for (; value >= 0x80; value >>= 7U) bytes_ += static_cast<char>(value | 0x80);
    bytes_ += static_cast<char>(value);
  }

  void signedNumber(std::int64_t value) {
    number((static_cast<std::uint64_t>(value) << 1U) ^ static_cast<std::uint64_t>(value >> 63));
  }

  void text(std::string_view text) {
    number(text.size());
    bytes_ += text;
  }

  std::string withChecksum() && {
    const auto checksum = checksum64(bytes_);
    bytes_.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
    return std::move(bytes_);
  }

 private:
  std::string bytes_;
};

// Reads what PackedWriter has written; anything else throws Damaged, which is made from a text.
// Borrows the bytes.
template <typename Damaged>
class PackedReader {
 public:
  PackedReader(std::string_view bytes, char version, const char* whenDamaged)
      : whenDamaged_(whenDamaged) {
    std::uint64_t checksum = 0;
    if (bytes.size() < 1 + sizeof checksum) damaged();
    const auto content = bytes.substr(0, bytes.size() - sizeof checksum);
    std::memcpy(&checksum, bytes.data() + content.size(), sizeof checksum);
    if (checksum != checksum64(content) || content.front() != version) damaged();
    rest_ = content.substr(1);
  }

  std::uint64_t number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64 && !rest_.empty(); shift += 7) {
      const auto part = static_cast<std::uint8_t>(rest_.front());
      rest_.remove_prefix(1);
      value |= static_cast<std::uint64_t>(part & 0x7FU) << shift;
      if ((part & 0x80U) == 0) return value;
    }
    damaged();
  }

  std::int64_t signedNumber() {
    const auto value = number();
    return static_cast<std::int64_t>((value >> 1U) ^ (~(value & 1U) + 1U));
  }

  // How many of something follow, each of which takes so many bytes at least.
  std::size_t count(std::size_t bytesOfEach) {
    const auto count = number();
    if (count > rest_.size() / bytesOfEach) damaged();
    return static_cast<std::size_t>(count);
  }

  std::string text() {
    const auto taken = rest_.substr(0, count(1));
    rest_.remove_prefix(taken.size());
    return std::string(taken);
  }

  void end() const {
    if (!rest_.empty()) damaged();
  }

 private:
  [[noreturn]] void damaged() const { throw Damaged(whenDamaged_); }

  const char* whenDamaged_;
  std::string_view rest_;
};

}  // namespace ox
