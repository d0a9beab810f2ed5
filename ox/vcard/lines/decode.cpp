#include "ox/vcard/lines/decode.hpp"

#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

int hexDigit(char c) {
  if (isDigit(c)) return c - '0';
  const char letter = upper(c);
  return letter >= 'A' && letter <= 'F' ? letter - 'A' + 10 : -1;
}

constexpr std::uint8_t kNoDigit = 0xFF;

constexpr auto kDigits = [] {
  std::array<std::uint8_t, 256> digits{};
  digits.fill(kNoDigit);
  std::uint8_t value = 0;
  for (const char c :
       std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/")) {
    digits[static_cast<std::uint8_t>(c)] = value++;
  }
  return digits;
}();

std::uint8_t digitOf(char c) {
  return kDigits[static_cast<std::uint8_t>(c)];
}

// The bits of a letter in each place of four, as the three bytes lie in memory, and a mark above
// them where the letter is none.
constexpr std::uint32_t kNoLetter = 1U << 24U;

constexpr auto kPlaces = [] {
  static_assert(std::endian::native == std::endian::little, "the first byte is the lowest");
  std::array<std::array<std::uint32_t, 256>, 4> places{};
  for (std::size_t place = 0; place < places.size(); ++place) {
    for (std::size_t c = 0; c < kDigits.size(); ++c) {
      const std::uint32_t bits = std::uint32_t{kDigits[c]} << (18U - 6U * place);
      const std::uint32_t bytes = bits >> 16U | (bits & 0xFF00U) | (bits & 0xFFU) << 16U;
      places[place][c] = kDigits[c] == kNoDigit ? kNoLetter : bytes;
    }
  }
  return places;
}();

// Four letters at a time, as long as nothing else comes. The letters read; `out` has room for one
// byte more than they stand for, since four are written for three.
std::size_t decodeQuads(std::string_view text, std::string& out) {
  assert(out.size() >= text.size() / 4 * 3 + 1 && "four bytes are written for three");
  const auto letter = [&](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
  std::size_t at = 0;
  char* to = out.data();
  for (; at + 4 <= text.size(); at += 4, to += 3) {
    const std::uint32_t bytes = kPlaces[0][letter(at)] | kPlaces[1][letter(at + 1)] |
                                kPlaces[2][letter(at + 2)] | kPlaces[3][letter(at + 3)];
    if (bytes >= kNoLetter) break;
    std::memcpy(to, &bytes, sizeof bytes);
  }
  out.resize(static_cast<std::size_t>(to - out.data()));
  return at;
}

bool isEscapable(char c) {
  return !isLetter(c) && !isDigit(c) && static_cast<unsigned char>(c) > ' ' &&
         static_cast<unsigned char>(c) < 0x7F;
}

// Reads the escape at text[at], a backslash: appends what it stands for, gives where it ends.
std::size_t appendEscape(std::string_view text, std::size_t at, std::string& out) {
  const char next = at + 1 < text.size() ? text[at + 1] : '\0';
  if (next == 'n' || next == 'N') {
    out += '\n';
  } else if (isEscapable(next)) {
    out += next;
  } else {
    out += '\\';
    return at + 1;
  }
  return at + 2;
}

}  // namespace

int hexByte(std::string_view text, std::size_t at) {
  if (at + 2 > text.size()) return -1;
  const int high = hexDigit(text[at]);
  const int low = hexDigit(text[at + 1]);
  return high < 0 || low < 0 ? -1 : high * 16 + low;
}

void appendQuotedPrintable(std::string_view text, std::string& out) {
  std::size_t at = 0;
  while (at < text.size()) {
    const auto mark = text.find('=', at);
    out.append(text.substr(at, mark - at));
    if (mark == std::string_view::npos) return;
    const int byte = hexByte(text, mark + 1);
    out += byte < 0 ? '=' : static_cast<char>(byte);
    at = mark + (byte < 0 ? 1 : 3);
  }
}

std::optional<std::string> decodeBase64(std::string_view text) {
  std::string out;
  out.resize(text.size() / 4 * 3 + 4);
  std::size_t at = decodeQuads(text, out);
  std::uint32_t bits = 0;
  unsigned count = 0;  // letters in bits
  bool padded = false;
  for (; at < text.size(); ++at) {
    const char c = text[at];
    if (isBlank(c) || c == '\r' || c == '\n') continue;
    if (c == '=') {
      padded = true;
      continue;
    }
    const std::uint8_t digit = digitOf(c);
    if (digit == kNoDigit || padded) return std::nullopt;
    bits = bits << 6U | digit;
    if (++count < 4) continue;
    for (const unsigned shift : {16U, 8U, 0U}) out += static_cast<char>(bits >> shift & 0xFFU);
    bits = 0;
    count = 0;
  }
  if (count == 1) return std::nullopt;
  if (count >= 2) out += static_cast<char>(bits >> (6 * count - 8) & 0xFFU);
  if (count == 3) out += static_cast<char>(bits >> 2U & 0xFFU);
  if (out.empty()) return std::nullopt;
  return out;
}

bool looksLikeBase64(std::string_view text) {
  while (!text.empty() && (text.back() == '=' || isBlank(text.back()))) text.remove_suffix(1);
  for (const char c : text) {
    if (digitOf(c) == kNoDigit) return false;
  }
  return !text.empty();
}

std::string unescaped(std::string_view text) {
  auto mark = text.find('\\');
  if (mark == std::string_view::npos) return std::string(text);
  std::string out;
  out.reserve(text.size());
  std::size_t at = 0;
  while (mark != std::string_view::npos) {
    out.append(text.substr(at, mark - at));
    at = appendEscape(text, mark, out);
    mark = text.find('\\', at);
  }
  out.append(text.substr(at));
  return out;
}

std::string unescapedList(std::string_view text, Dialect dialect, std::string_view separator) {
  if (dialect == Dialect::V21 || text.find(',') == std::string_view::npos) {
    return unescaped(text);
  }
  std::string out;
  out.reserve(text.size() + separator.size());
  for (std::size_t at = 0; at < text.size();) {
    if (text[at] == '\\') {
      at = appendEscape(text, at, out);
    } else if (text[at] == ',') {
      out += separator;
      ++at;
    } else {
      out += text[at++];
    }
  }
  return out;
}

}  // namespace ox::vcard
