#include "ox/base/base64.hpp"

#include <array>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ox {
namespace {

constexpr std::string_view kDigits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kNoDigit = 0xFF;

constexpr std::array<std::uint8_t, 256> valuesOfDigits() {
  std::array<std::uint8_t, 256> values{};
  values.fill(kNoDigit);
  for (std::size_t i = 0; i < kDigits.size(); ++i) {
    values[static_cast<std::uint8_t>(kDigits[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}
constexpr auto kValues = valuesOfDigits();

// Both digits of every twelve bits: half as many steps for pictures, which are long.
constexpr auto kPairs = [] {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits) {
    pairs[bits] = {kDigits[bits >> 6], kDigits[bits & 63]};
  }
  return pairs;
}();

std::uint8_t byteOf(char c) {
  return static_cast<std::uint8_t>(c);
}

std::uint32_t byteAt(std::string_view bytes, std::size_t at) {
  return at < bytes.size() ? static_cast<std::uint8_t>(bytes[at]) : 0U;
}

// The 24 bits of four digits, those from `count` on taken as zero; missing for a foreign character.
std::optional<std::uint32_t> bitsOf(std::string_view digits, std::size_t count) {
  std::uint32_t bits = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const std::uint8_t value =
        i < count ? kValues[static_cast<std::uint8_t>(digits[i])] : std::uint8_t{0};
    if (value == kNoDigit) return std::nullopt;
    bits = bits << 6 | value;
  }
  return bits;
}

}  // namespace

std::string base64(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4, '=');
  char* out = text.data();
  std::size_t at = 0;
  for (; at + 3 <= bytes.size(); at += 3, out += 4) {
    const auto* const three = bytes.data() + at;
    const std::uint32_t bits = static_cast<std::uint32_t>(byteOf(three[0])) << 16 |
                               static_cast<std::uint32_t>(byteOf(three[1])) << 8 | byteOf(three[2]);
    std::memcpy(out, kPairs[bits >> 12].data(), 2);
    std::memcpy(out + 2, kPairs[bits & 0xFFF].data(), 2);
  }
  assert(bytes.size() - at < 3);
  if (at == bytes.size()) return text;
  const std::uint32_t bits = byteAt(bytes, at) << 16 | byteAt(bytes, at + 1) << 8;
  std::memcpy(out, kPairs[bits >> 12].data(), 2);
  if (at + 1 < bytes.size()) out[2] = kDigits[bits >> 6 & 63];
  return text;
}

std::optional<std::string> bytesOfBase64(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3);
  for (std::size_t at = 0; at < text.size(); at += 4) {
    const bool last = at + 4 == text.size();
    const auto bits = bitsOf(text.substr(at, 4), last ? 4 - padding : 4);
    if (!bits) return std::nullopt;
    bytes += static_cast<char>(*bits >> 16 & 0xFF);
    bytes += static_cast<char>(*bits >> 8 & 0xFF);
    bytes += static_cast<char>(*bits & 0xFF);
  }
  assert(bytes.size() == text.size() / 4 * 3 && bytes.size() >= padding);
  for (std::size_t i = 0; i < padding; ++i) {
    if (bytes.back() != '\0') return std::nullopt;
    bytes.pop_back();
  }
  return bytes;
}

}  // namespace ox
