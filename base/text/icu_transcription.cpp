#include "base/text/icu_transcription.hpp"

#include <memory>
#include <stdexcept>
#include <unicode/locid.h>
#include <unicode/translit.h>
#include <unicode/unistr.h>

#include "base/text/marks.hpp"

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

}  // namespace

std::string transcribeWithIcu(std::string_view text) {
  static thread_local const std::unique_ptr<icu::Transliterator> hanLatin(prototype().clone());

  auto wide = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  hanLatin->transliterate(wide);
  std::string result;
  withoutMarks(wide).toUpper(icu::Locale::getRoot()).toUTF8String(result);
  return result;
}

}  // namespace ox
