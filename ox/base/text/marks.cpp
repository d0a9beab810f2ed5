#include "ox/base/text/marks.hpp"

#include <algorithm>
#include <stdexcept>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <vector>

namespace ox {
namespace {

const icu::Normalizer2& normalizer(const icu::Normalizer2* (*get)(UErrorCode&)) {
  UErrorCode status = U_ZERO_ERROR;
  const auto* instance = get(status);
  if (U_FAILURE(status)) throw std::runtime_error("ICU has no normalisation data");
  return *instance;
}

icu::UnicodeString normalized(const icu::Normalizer2& form, const icu::UnicodeString& text) {
  UErrorCode status = U_ZERO_ERROR;
  auto result = form.normalize(text, status);
  return U_FAILURE(status) ? text : result;
}

bool isMark(UChar32 character) {
  return (U_GET_GC_MASK(character) & U_GC_M_MASK) != 0;
}

// Han-Latin makes letters of the sound marks of kana, and sets an ideographic mark off by blanks.
bool isReadAsLetter(UChar32 character) {
  return character == 0x3099 || character == 0x309A ||
         u_hasBinaryProperty(character, UCHAR_IDEOGRAPHIC) != 0;
}

void appendWithoutMarks(const icu::UnicodeString& text, icu::UnicodeString& bare) {
  for (int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
    const UChar32 character = text.char32At(at);
    if (!isMark(character)) bare.append(character);
  }
}

// The canonical order (Unicode, section 3.11, D109) of decomposed characters.
void orderMarks(std::vector<UChar32>& characters) {
  const auto isStarter = [](UChar32 c) { return u_getCombiningClass(c) == 0; };
  for (auto first = characters.begin(); first != characters.end();) {
    const auto last = std::find_if(first, characters.end(), isStarter);
    std::stable_sort(first, last, [](UChar32 a, UChar32 b) {
      return u_getCombiningClass(a) < u_getCombiningClass(b);
    });
    first = std::find_if_not(last, characters.end(), isStarter);
  }
}

}  // namespace

// Every character is decomposed by itself: the order of marks, which takes NFD square time to find
// where there are many, does not matter when they go.
icu::UnicodeString withoutMarks(const icu::UnicodeString& text) {
  static const auto& nfd = normalizer(&icu::Normalizer2::getNFDInstance);
  static const auto& nfc = normalizer(&icu::Normalizer2::getNFCInstance);

  icu::UnicodeString bare;
  icu::UnicodeString parts;
  for (int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
    const UChar32 character = text.char32At(at);
    if (nfd.getDecomposition(character, parts)) {
      appendWithoutMarks(parts, bare);
    } else if (!isMark(character)) {
      bare.append(character);
    }
  }
  return normalized(nfc, bare);
}

icu::UnicodeString withShortRunsOfMarks(const icu::UnicodeString& text) {
  icu::UnicodeString shorter;
  int32_t run = 0;
  for (int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
    const UChar32 character = text.char32At(at);
    run = isMark(character) && !isReadAsLetter(character) ? run + 1 : 0;
    if (run <= kLongestRunOfMarks) shorter.append(character);
  }
  return shorter;
}

icu::UnicodeString composedText(const icu::UnicodeString& text) {
  static const auto& nfd = normalizer(&icu::Normalizer2::getNFDInstance);
  static const auto& nfc = normalizer(&icu::Normalizer2::getNFCInstance);

  std::vector<UChar32> characters;
  icu::UnicodeString parts;
  for (int32_t at = 0; at < text.length(); at = text.moveIndex32(at, 1)) {
    const UChar32 character = text.char32At(at);
    if (!nfd.getDecomposition(character, parts)) parts = character;
    for (int32_t i = 0; i < parts.length(); i = parts.moveIndex32(i, 1)) {
      characters.push_back(parts.char32At(i));
    }
  }
  orderMarks(characters);
  return normalized(nfc, icu::UnicodeString::fromUTF32(characters.data(),
                                                       static_cast<int32_t>(characters.size())));
}

}  // namespace ox
