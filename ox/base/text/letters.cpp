#include "ox/base/text/letters.hpp"

#include <unicode/uchar.h>

namespace ox {
namespace {

UChar32 codePoint(char32_t c) {
  return static_cast<UChar32>(c);
}

}  // namespace

bool isLetter(char32_t c) {
  return u_isalpha(codePoint(c)) != 0;
}

bool isUpperLetter(char32_t c) {
  return u_isupper(codePoint(c)) != 0;
}

bool isLowerLetter(char32_t c) {
  return u_islower(codePoint(c)) != 0;
}

char32_t smallLetterOf(char32_t c) {
  return static_cast<char32_t>(u_tolower(codePoint(c)));
}

}  // namespace ox
