#pragma once

namespace ox {

// What a character is, as Unicode tells.
bool isLetter(char32_t c);
bool isUpperLetter(char32_t c);
bool isLowerLetter(char32_t c);
// The small letter of a capital one; any other character itself. No locale takes part.
char32_t smallLetterOf(char32_t c);

}  // namespace ox
