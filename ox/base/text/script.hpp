#pragma once

#include <string>
#include <string_view>

namespace ox {

// True when the text is written wholly in Han, Hiragana, Katakana or Hangul, as a family or given
// name of East Asia is. Besides characters of these scripts only what belongs inside such names is
// let through: the prolonged sound mark, the middle dots that join names written by sound, the
// combining voicing marks of kana, and variation selectors after a character. Blanks, digits and
// other punctuation are not. The empty text, and one of such marks alone, give false.
bool isHanKanaHangul(std::string_view text);

// The script that the letters of the text are written in, by its ISO 15924 code ("Latn", "Cyrl");
// "Hrkt" for both kinds of kana, "Zyyy" for several scripts and for no letters at all.
std::string scriptCode(std::string_view text);

}  // namespace ox
