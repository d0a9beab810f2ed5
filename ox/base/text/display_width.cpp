#include "ox/base/text/display_width.hpp"

#include <cstdint>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace ox {
namespace {

constexpr UChar32 kZeroWidthJoiner = 0x200D;
constexpr UChar32 kEmojiPresentation = 0xFE0F;

bool isZeroWidth(UChar32 c) {
  switch (u_charType(c)) {
    case U_NON_SPACING_MARK:
    case U_ENCLOSING_MARK:
    case U_FORMAT_CHAR:
    case U_CONTROL_CHAR:
      return true;
    default:
      break;
  }
  // The vowels and final consonants of decomposed Hangul join the letter before them.
  const auto jamo = u_getIntPropertyValue(c, UCHAR_HANGUL_SYLLABLE_TYPE);
  return jamo == U_HST_VOWEL_JAMO || jamo == U_HST_TRAILING_JAMO;
}

bool isWide(UChar32 c) {
  const auto width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
  return width == U_EA_WIDE || width == U_EA_FULLWIDTH ||
         u_hasBinaryProperty(c, UCHAR_EMOJI_PRESENTATION);
}

// Walks the text and adds up columns; a character may change what the one before it took.
class Columns {
 public:
  // Columns after this character.
  std::size_t add(UChar32 c) {
    const bool joined = afterJoiner_;
    afterJoiner_ = c == kZeroWidthJoiner;
    if (c == kEmojiPresentation && last_ == 1) {
      last_ = 2;
      return ++total_;
    }
    if (joined || isZeroWidth(c) || closesFlag(c) ||
        (last_ == 2 && u_hasBinaryProperty(c, UCHAR_EMOJI_MODIFIER))) {
      return total_;
    }
    openFlag_ = u_hasBinaryProperty(c, UCHAR_REGIONAL_INDICATOR);
    last_ = isWide(c) || openFlag_ ? 2 : 1;
    return total_ += last_;
  }

 private:
  // Two regional indicators make one flag.
  bool closesFlag(UChar32 c) {
    if (!openFlag_ || !u_hasBinaryProperty(c, UCHAR_REGIONAL_INDICATOR)) return false;
    openFlag_ = false;
    return true;
  }

  std::size_t total_ = 0;
  std::size_t last_ = 0;
  bool afterJoiner_ = false;
  bool openFlag_ = false;
};

UChar32 next(std::string_view text, std::int64_t& offset) {
  UChar32 c = 0;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto size = static_cast<std::int64_t>(text.size());
  U8_NEXT_OR_FFFD(bytes, offset, size, c);
  return c;
}

}  // namespace

std::size_t displayWidth(std::string_view text) {
  Columns columns;
  std::size_t width = 0;
  const auto size = static_cast<std::int64_t>(text.size());
  for (std::int64_t offset = 0; offset < size;) width = columns.add(next(text, offset));
  return width;
}

std::size_t frontOfWidth(std::string_view text, std::size_t columns) {
  Columns walked;
  std::size_t fitting = 0;
  const auto size = static_cast<std::int64_t>(text.size());
  for (std::int64_t offset = 0; offset < size;) {
    if (walked.add(next(text, offset)) > columns) break;
    fitting = static_cast<std::size_t>(offset);
  }
  return fitting;
}

}  // namespace ox
