#include "base/text/transcription.hpp"

#include "base/text/icu_transcription.hpp"

namespace ox {

std::string transcribeToLatin(std::string_view text) {
  return transcribeWithIcu(text);
}

}  // namespace ox
