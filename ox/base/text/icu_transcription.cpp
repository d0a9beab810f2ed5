#include "ox/base/text/icu_transcription.hpp"

#include <memory>
#include <stdexcept>
#include <unicode/locid.h>
#include <unicode/translit.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "ox/base/text/marks.hpp"

namespace ox {
namespace {

// Reading the rules takes about a tenth of a second, copying the result next to nothing: made once
// and copied for each thread.
const icu::Transliterator& prototype() {
  static const auto& hanLatin = *[] {
    UErrorCode status = U_ZERO_ERROR;
    auto* made = icu::Transliterator::createInstance("Han-Latin", UTRANS_FORWARD, status);
    if (U_FAILURE(status) || made == nullptr) throw std::runtime_error("ICU has no Han-Latin data");
    return made;
  }();
  return hanLatin;
}

// "[...] > syllable;": one character of a set, wherever it stands.
bool isFreeOfContext(const icu::UnicodeString& rule) {
  const int32_t setEnd = rule.indexOf(u']');
  return rule.startsWith(u"[") && rule.indexOf(u" > ") == setEnd + 1;
}

}  // namespace

std::string transcribeWithIcu(std::string_view text) {
  return transcribeWithIcu(icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size()))));
}

std::string transcribeWithIcu(icu::UnicodeString text) {
  static thread_local const std::unique_ptr<icu::Transliterator> hanLatin(prototype().clone());

  hanLatin->transliterate(text);
  std::string result;
  withoutMarks(text).toUpper(icu::Locale::getRoot()).toUTF8String(result);
  return result;
}

std::u32string contextualHan() {
  icu::UnicodeString rules;
  prototype().toRules(rules, false);
  std::u32string found;
  for (int32_t from = 0; from < rules.length();) {
    int32_t end = rules.indexOf(u'\n', from);
    if (end < 0) end = rules.length();
    const auto rule = rules.tempSubStringBetween(from, end);
    from = end + 1;
    if (isFreeOfContext(rule)) continue;
    for (int32_t at = 0; at < rule.length(); at = rule.moveIndex32(at, 1)) {
      const UChar32 character = rule.char32At(at);
      if (u_hasBinaryProperty(character, UCHAR_IDEOGRAPHIC)) {
        found.push_back(static_cast<char32_t>(character));
      }
    }
  }
  return found;
}

}  // namespace ox
