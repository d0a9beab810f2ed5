#include "ox/base/text/script.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <unicode/uscript.h>
#include <unicode/utf8.h>

namespace ox {
namespace {

struct Range {
  UChar32 first;
  UChar32 last;
};

// Shared by several scripts, so their script property names none of ours.
constexpr std::array kMarksOfNames = {
    Range{0x00B7, 0x00B7},    // middle dot
    Range{0x3099, 0x309A},    // combining voiced and semi-voiced sound marks
    Range{0x30FB, 0x30FC},    // katakana middle dot, prolonged sound mark
    Range{0xFE00, 0xFE0F},    // variation selectors
    Range{0xFF65, 0xFF65},    // half-width middle dot
    Range{0xFF70, 0xFF70},    // half-width prolonged sound mark
    Range{0xE0100, 0xE01EF},  // variation selectors of ideographs
};

bool isMarkOfNames(UChar32 character) {
  return std::any_of(kMarksOfNames.begin(), kMarksOfNames.end(), [&](const Range& range) {
    return character >= range.first && character <= range.last;
  });
}

bool isKana(UScriptCode script) {
  return script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA ||
         script == USCRIPT_KATAKANA_OR_HIRAGANA;
}

bool isOfTheScripts(UChar32 character) {
  if (character < 0x1100) return false;
  if (character >= 0x4E00 && character <= 0x9FFF) return true;
  UErrorCode status = U_ZERO_ERROR;
  const auto script = uscript_getScript(character, &status);
  return script == USCRIPT_HAN || script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA ||
         script == USCRIPT_HANGUL;
}

}  // namespace

bool isHanKanaHangul(std::string_view text) {
  bool found = false;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const std::size_t length = text.size();
  for (std::size_t at = 0; at < length;) {
    UChar32 character = 0;
    U8_NEXT(bytes, at, length, character);
    if (character < 0) return false;
    if (isOfTheScripts(character)) {
      found = true;
    } else if (!isMarkOfNames(character)) {
      return false;
    }
  }
  return found;
}

std::string scriptCode(std::string_view text) {
  constexpr const char* kUndetermined = "Zyyy";
  auto found = USCRIPT_COMMON;
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  for (std::size_t at = 0; at < text.size();) {
    UChar32 character = 0;
    U8_NEXT(bytes, at, text.size(), character);
    UErrorCode status = U_ZERO_ERROR;
    const auto script = character < 0 ? USCRIPT_COMMON : uscript_getScript(character, &status);
    if (script == USCRIPT_COMMON || script == USCRIPT_INHERITED || script == found) continue;
    const bool areBothKana = isKana(script) && isKana(found);
    if (found != USCRIPT_COMMON && !areBothKana) return kUndetermined;
    found = areBothKana ? USCRIPT_KATAKANA_OR_HIRAGANA : script;
  }
  return found == USCRIPT_COMMON ? kUndetermined : uscript_getShortName(found);
}

}  // namespace ox
