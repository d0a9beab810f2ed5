#include "ox/base/text/composed.hpp"

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>

#include "ox/base/text/utf8.hpp"

namespace ox {

std::string composed(std::string_view text) {
  if (isAscii(text)) return std::string(text);
  UErrorCode status = U_ZERO_ERROR;
  const auto* form = icu::Normalizer2::getNFCInstance(status);
  std::string result;
  icu::StringByteSink<std::string> sink(&result);
  if (U_SUCCESS(status)) {
    const icu::StringPiece piece(text.data(), static_cast<int32_t>(text.size()));
    form->normalizeUTF8(0, piece, sink, nullptr, status);
  }
  return U_FAILURE(status) ? std::string(text) : result;
}

}  // namespace ox
