#pragma once

#include <cstdint>
#include <unicode/unistr.h>

// What is done with combining marks, in time by the length of the text however many of them stand
// together. For sources of this folder only.

namespace ox {

// The text in NFC without its combining marks: decomposed (NFD), every character of general
// category M (Mn, Mc, Me) removed, composed again.
icu::UnicodeString withoutMarks(const icu::UnicodeString& text);

// More marks in a row than any script has. No rule of Han-Latin tells more of them from so many.
inline constexpr std::int32_t kLongestRunOfMarks = 16;
// The text with the first so many marks of every longer run.
icu::UnicodeString withShortRunsOfMarks(const icu::UnicodeString& text);

// The text in NFC.
icu::UnicodeString composedText(const icu::UnicodeString& text);

}  // namespace ox
