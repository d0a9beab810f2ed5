#include "ox/base/text/utf8.hpp"

#include <cassert>
#include <cstdint>
#include <cstring>
#include <utility>

namespace ox {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// What may follow a lead byte: how many bytes, and the range of the first of them. The others are
// 80 to BF.
struct Follow {
  std::uint8_t count = 0;
  std::uint8_t low = 0x80;
  std::uint8_t high = 0xBF;
  bool valid = true;
};

Follow followOf(std::uint8_t lead) {
  if (lead < 0x80) return {};
  if (lead < 0xC2) return {.valid = false};
  if (lead < 0xE0) return {.count = 1};
  if (lead == 0xE0) return {.count = 2, .low = 0xA0};
  if (lead == 0xED) return {.count = 2, .high = 0x9F};
  if (lead < 0xF0) return {.count = 2};
  if (lead == 0xF0) return {.count = 3, .low = 0x90};
  if (lead < 0xF4) return {.count = 3};
  if (lead == 0xF4) return {.count = 3, .high = 0x8F};
  return {.valid = false};
}

std::uint8_t byteAt(std::string_view text, std::size_t at) {
  return static_cast<std::uint8_t>(text[at]);
}

// The top bits of the eight bytes there.
std::uint64_t topBits(const char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word & 0x8080808080808080U;
}

// The end of the run of ASCII that starts at `at`.
std::size_t afterAscii(std::string_view text, std::size_t at) {
  while (text.size() - at >= sizeof(std::uint64_t) && topBits(text.data() + at) == 0) {
    at += sizeof(std::uint64_t);
  }
  while (at < text.size() && byteAt(text, at) < 0x80) ++at;
  return at;
}

struct Step {
  std::size_t length;  // of the character, or of the maximal ill-formed subpart
  bool valid;
};

Step stepAt(std::string_view text, std::size_t at) {
  assert(at < text.size());
  const Follow follow = followOf(byteAt(text, at));
  if (!follow.valid) return {1, false};
  std::uint8_t low = follow.low;
  std::uint8_t high = follow.high;
  for (std::size_t i = 1; i <= follow.count; ++i) {
    if (at + i >= text.size()) return {i, false};
    const std::uint8_t byte = byteAt(text, at + i);
    if (byte < low || byte > high) return {i, false};
    low = 0x80;
    high = 0xBF;
  }
  return {std::size_t{follow.count} + 1, true};
}

// True for a character of three bytes, of those whose second byte may be any.
bool isPlainThree(std::string_view text, std::size_t at) {
  const auto lead = byteAt(text, at);
  if (lead <= 0xE0 || lead >= 0xF0 || lead == 0xED || text.size() - at < 3) return false;
  return (byteAt(text, at + 1) & 0xC0U) == 0x80 && (byteAt(text, at + 2) & 0xC0U) == 0x80;
}

// Where the first ill-formed part starts; the size of the text when there is none.
std::size_t validPrefix(std::string_view text) {
  std::size_t at = 0;
  while (true) {
    at = afterAscii(text, at);
    assert(at <= text.size());
    if (at == text.size()) return at;
    // Nearly every character beyond ASCII is one of these.
    if (isPlainThree(text, at)) {
      at += 3;
      continue;
    }
    const Step step = stepAt(text, at);
    if (!step.valid) return at;
    at += step.length;
  }
}

}  // namespace

bool isAscii(std::string_view text) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  std::uint64_t found = 0;
  if (text.size() < kWord) {
    for (std::size_t at = 0; at < text.size(); ++at) found |= byteAt(text, at) & 0x80U;
    return found == 0;
  }
  for (std::size_t at = 0; at + kWord <= text.size(); at += kWord) {
    found |= topBits(text.data() + at);
  }
  return (found | topBits(text.data() + text.size() - kWord)) == 0;
}

bool isValidUtf8(std::string_view text) {
  return isAscii(text) || validPrefix(text) == text.size();
}

std::string validUtf8(std::string text) {
  const std::size_t firstBad = validPrefix(text);
  if (firstBad == text.size()) return text;

  std::string_view rest = std::string_view(text).substr(firstBad);
  std::string result(text, 0, firstBad);
  result.reserve(text.size() + 8);
  while (!rest.empty()) {
    result.append(kReplacement);
    rest.remove_prefix(stepAt(rest, 0).length);
    const std::size_t good = validPrefix(rest);
    result.append(rest.substr(0, good));
    rest.remove_prefix(good);
  }
  return result;
}

}  // namespace ox
