#include "ox/base/text/transcription_table.hpp"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <string>
#include <string_view>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "ox/base/text/icu_transcription.hpp"
#include "ox/base/text/marks.hpp"

namespace ox {
namespace {

constexpr char32_t kLatinEnd = 0x0250;
constexpr char32_t kHanBegin = 0x3400;
constexpr char32_t kHanEnd = 0xA000;
constexpr std::size_t kSize = kLatinEnd + (kHanEnd - kHanBegin);

using Table = std::array<std::atomic<Transcribed>, kSize>;
static_assert(std::atomic<Transcribed>::is_always_lock_free);

Table& table() {
  static auto& entries = *new Table{};
  return entries;
}

bool isContextual(char32_t character) {
  static const auto& characters = *new std::u32string(contextualHan());
  return characters.find(character) != std::u32string::npos;
}

// The conditions of Han-Latin's two rules that insert blanks.
std::uint8_t blankTraits(UChar32 character) {
  const auto category = U_GET_GC_MASK(character);
  const bool ideographic = u_hasBinaryProperty(character, UCHAR_IDEOGRAPHIC) != 0;
  const bool terminal =
      character < 0x80 &&
      std::string_view(".,:;?!").find(static_cast<char>(character)) != std::string_view::npos;
  std::uint8_t result = 0;
  if ((category & U_GC_L_MASK) != 0) result |= traits::kLetter;
  if (ideographic || terminal || (category & (U_GC_PE_MASK | U_GC_PF_MASK)) != 0) {
    result |= traits::kBlankToLetter;
  }
  if (ideographic || (category & (U_GC_PS_MASK | U_GC_PI_MASK)) != 0) {
    result |= traits::kBlankAtLetter;
  }
  return result;
}

std::string latinOf(char32_t character) {
  icu::UnicodeString wide(static_cast<UChar32>(character));
  std::string result;
  if (character >= kLatinEnd) return transcribeWithIcu(wide.toUTF8String(result));
  // The rules leave these alone, so a book without a Han character never loads them.
  return withoutMarks(wide).toUpper(icu::Locale::getRoot()).toUTF8String(result);
}

Transcribed workedOut(char32_t character) {
  const std::string text = latinOf(character);
  if (text.size() > Transcribed::kSpace) return {.traits = traits::kKnown | traits::kNotHere};
  Transcribed result{.length = static_cast<std::uint8_t>(text.size()),
                     .traits = blankTraits(static_cast<UChar32>(character))};
  assert(text.size() <= result.text.size());
  std::copy(text.begin(), text.end(), result.text.begin());
  result.traits |= traits::kKnown;
  if (character >= kHanBegin && isContextual(character)) result.traits |= traits::kContextual;
  return result;
}

}  // namespace

Transcribed transcribed(char32_t character) {
  std::size_t index = character;
  if (character >= kLatinEnd) {
    if (character < kHanBegin || character >= kHanEnd) return {.traits = traits::kNotHere};
    index = kLatinEnd + (character - kHanBegin);
  }
  assert(index < kSize);
  auto& entry = table()[index];
  Transcribed result = entry.load(std::memory_order_relaxed);
  if ((result.traits & traits::kKnown) == 0) {
    result = workedOut(character);
    entry.store(result, std::memory_order_relaxed);
  }
  return result;
}

}  // namespace ox
