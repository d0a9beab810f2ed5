#include "ox/base/text/digits.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace ox {
namespace {

bool isWrittenBetweenDigits(UChar32 character) {
  switch (character) {
    case U'+':
    case U'(':
    case U')':
    case U'.':
    case U'/':
    case U'\u2212':  // the minus sign
      return true;
    default:
      return u_isUWhiteSpace(character) != 0 || u_charType(character) == U_DASH_PUNCTUATION;
  }
}

icu::UnicodeString wide(std::string_view text) {
  return icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
}

}  // namespace

std::string decimalDigits(std::string_view text) {
  if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits),
                         [](char c) { return c >= '0' && c <= '9'; });
    return digits;
  }
  const auto characters = wide(text);
  std::string digits;
  for (std::int32_t at = 0; at < characters.length(); at = characters.moveIndex32(at, 1)) {
    const auto value = u_charDigitValue(characters.char32At(at));
    if (value >= 0) digits += static_cast<char>('0' + value);
  }
  return digits;
}

bool isOfDigits(std::string_view text) {
  const auto characters = wide(text);
  for (std::int32_t at = 0; at < characters.length(); at = characters.moveIndex32(at, 1)) {
    const auto character = characters.char32At(at);
    if (u_charDigitValue(character) < 0 && !isWrittenBetweenDigits(character)) return false;
  }
  return true;
}

std::size_t blankAt(std::string_view text, std::size_t at) {
  const auto lead = static_cast<unsigned char>(text[at]);
  if (lead < 0x80) return lead <= ' ' ? 1 : 0;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  const auto character = wide(text.substr(at, length));
  return u_isUWhiteSpace(character.char32At(0)) != 0 ? length : 0;
}

}  // namespace ox
