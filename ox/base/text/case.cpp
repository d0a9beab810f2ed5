#include "ox/base/text/case.hpp"

#include <algorithm>
#include <array>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "ox/base/text/marks.hpp"

namespace ox {
namespace {

bool isAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

char lowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

std::string folded(std::string_view text) {
  std::string result;
  icu::StringByteSink<std::string> sink(&result);
  UErrorCode status = U_ZERO_ERROR;
  icu::CaseMap::utf8Fold(0, icu::StringPiece(text.data(), static_cast<int32_t>(text.size())), sink,
                         nullptr, status);
  return U_FAILURE(status) ? std::string(text) : result;
}

// Letters that are no base with a mark to Unicode, and that people type as if they were.
struct TypedLetter {
  char16_t letter;
  const char16_t* typed;
};
constexpr std::array kTypedLetters = {
    TypedLetter{u'æ', u"ae"}, TypedLetter{u'ð', u"d"}, TypedLetter{u'ø', u"o"},
    TypedLetter{u'þ', u"th"}, TypedLetter{u'đ', u"d"}, TypedLetter{u'ħ', u"h"},
    TypedLetter{u'ı', u"i"},  TypedLetter{u'ł', u"l"}, TypedLetter{u'ŋ', u"n"},
    TypedLetter{u'œ', u"oe"}, TypedLetter{u'ŧ', u"t"}};

icu::UnicodeString asTyped(const icu::UnicodeString& folded) {
  icu::UnicodeString result;
  for (std::int32_t at = 0; at < folded.length(); ++at) {
    const auto unit = folded.charAt(at);
    const auto* found = std::ranges::find(kTypedLetters, unit, &TypedLetter::letter);
    if (found == kTypedLetters.end()) {
      result.append(unit);
    } else {
      result.append(found->typed, -1);
    }
  }
  return result;
}

// Letters and digits of full width, ligatures and their like as plain ones. To be called when the
// marks are gone: normalizing sorts them, which takes square time.
icu::UnicodeString withPlainLetters(const icu::UnicodeString& text) {
  UErrorCode status = U_ZERO_ERROR;
  const auto* normalizer = icu::Normalizer2::getNFKCCasefoldInstance(status);
  if (U_FAILURE(status)) return text;
  auto result = normalizer->normalize(text, status);
  return U_FAILURE(status) ? text : result;
}

}  // namespace

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  const std::size_t common = std::min(a.size(), b.size());
  std::size_t at = 0;
  for (; at < common; ++at) {
    // A letter outside ASCII may fold into ASCII (the Kelvin sign to k): the short way ends here.
    if (!isAscii(a[at]) || !isAscii(b[at])) break;
    if (lowerAscii(a[at]) != lowerAscii(b[at])) return false;
  }
  const auto restOfA = a.substr(at);
  const auto restOfB = b.substr(at);
  if (restOfA.empty() || restOfB.empty()) return restOfA.empty() && restOfB.empty();
  return folded(restOfA) == folded(restOfB);
}

std::string foldedForSearch(std::string_view text) {
  if (std::all_of(text.begin(), text.end(), isAscii)) {
    std::string result(text);
    std::transform(result.begin(), result.end(), result.begin(), lowerAscii);
    return result;
  }
  // Folded first: some folds produce marks (a capital I with a dot above).
  auto wide = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  wide.foldCase();
  std::string result;
  asTyped(withoutMarks(withPlainLetters(withoutMarks(wide)))).toUTF8String(result);
  return result;
}

}  // namespace ox
