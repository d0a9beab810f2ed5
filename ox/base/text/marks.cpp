#include "ox/base/text/marks.hpp"

#include <stdexcept>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>

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

}  // namespace

icu::UnicodeString withoutMarks(const icu::UnicodeString& text) {
  static const auto& nfd = normalizer(&icu::Normalizer2::getNFDInstance);
  static const auto& nfc = normalizer(&icu::Normalizer2::getNFCInstance);

  const auto decomposed = normalized(nfd, text);
  icu::UnicodeString bare;
  for (int32_t at = 0; at < decomposed.length(); at = decomposed.moveIndex32(at, 1)) {
    const UChar32 character = decomposed.char32At(at);
    if ((U_GET_GC_MASK(character) & U_GC_M_MASK) == 0) bare.append(character);
  }
  return normalized(nfc, bare);
}

}  // namespace ox
