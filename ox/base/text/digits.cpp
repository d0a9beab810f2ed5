#include "ox/base/text/digits.hpp"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace ox {

std::string decimalDigits(std::string_view text) {
  if (std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
    std::string digits;
    std::ranges::copy_if(text, std::back_inserter(digits),
                         [](char c) { return c >= '0' && c <= '9'; });
    return digits;
  }
  const auto wide = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
  std::string digits;
  for (std::int32_t at = 0; at < wide.length(); at = wide.moveIndex32(at, 1)) {
    const auto value = u_charDigitValue(wide.char32At(at));
    if (value >= 0) digits += static_cast<char>('0' + value);
  }
  return digits;
}

}  // namespace ox
