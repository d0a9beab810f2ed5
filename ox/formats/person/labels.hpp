#pragma once

#include <string>
#include <string_view>

namespace ox::formats {

// A label as people write it: "Home Fax" for a built-in one, any other as it is.
std::string wordOfLabel(std::string_view label);
// The label that a word means, in any case: a built-in one where it is the word of one. Blanks
// around it say nothing, nor do control characters anywhere in it.
std::string labelOfWord(std::string_view text);

}  // namespace ox::formats
