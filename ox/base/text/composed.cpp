#include "ox/base/text/composed.hpp"

#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

#include "ox/base/text/marks.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {

std::string composed(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  UErrorCode status = U_ZERO_ERROR;
  const auto* form = icu::Normalizer2::getNFCInstance(status);
  if (U_FAILURE(status)) return std::string(text);
  const auto wide = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  // Nearly every text is composed already.
  if (form->quickCheck(wide, status) == UNORM_YES && U_SUCCESS(status)) return std::string(text);
  std::string result;
  return composedText(wide).toUTF8String(result);
}

}  // namespace ox
