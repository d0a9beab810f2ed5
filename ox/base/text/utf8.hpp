#pragma once

#include <string>
#include <string_view>

namespace ox {

// True when no byte is above 7F; the empty text is.
bool isAscii(std::string_view text);

// True when the bytes are well-formed UTF-8 (Unicode, table 3-7): no overlong forms, no surrogates,
// nothing above U+10FFFF. NUL is a character like any other; the empty text is valid.
bool isValidUtf8(std::string_view text);

// The text with every ill-formed part replaced by U+FFFD, one for each maximal subpart (Unicode,
// section 3.9). A valid text comes back as it is, without a copy.
std::string validUtf8(std::string text);

}  // namespace ox
