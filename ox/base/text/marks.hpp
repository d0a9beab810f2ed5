#pragma once

#include <unicode/unistr.h>

namespace ox {

// The text in NFC without its combining marks: decomposed (NFD), every character of general
// category M (Mn, Mc, Me) removed, composed again. For sources of this folder only.
icu::UnicodeString withoutMarks(const icu::UnicodeString& text);

}  // namespace ox
