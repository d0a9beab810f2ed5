#include "ox/base/text/showing.hpp"

#include <cassert>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace ox {
namespace {

Showing showingOf(UChar32 c) {
  if (c == '\n' || c == 0x2028 || c == 0x2029) return Showing::LineBreak;
  const auto category = U_GET_GC_MASK(c);
  if ((category & U_GC_M_MASK) != 0) return Showing::Mark;
  const bool isControl = (category & U_GC_CC_MASK) != 0;
  // The deprecated ones among them shape digits and letters anew for all that follows.
  const bool isSwitch = (c >= 0x206A && c <= 0x206F) || (c >= 0xFFF9 && c <= 0xFFFB);
  const bool steers = isControl || isSwitch || u_hasBinaryProperty(c, UCHAR_BIDI_CONTROL) != 0;
  return steers ? Showing::Steers : Showing::AsItIs;
}

}  // namespace

ShownCharacter firstShown(std::string_view text) {
  assert(!text.empty());
  const auto first = static_cast<unsigned char>(text.front());
  if (first >= 0x20 && first < 0x7F) return {text.substr(0, 1), first, Showing::AsItIs};
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  std::int64_t length = 0;
  UChar32 c = 0;
  U8_NEXT(bytes, length, static_cast<std::int64_t>(text.size()), c);
  const auto taken = text.substr(0, static_cast<std::size_t>(length));
  if (c < 0) return {taken, U'\uFFFD', Showing::Steers};
  return {taken, static_cast<char32_t>(c), showingOf(c)};
}

}  // namespace ox
