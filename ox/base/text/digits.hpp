#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ox/base/export.hpp"

namespace ox {

// The decimal digits of the text, in whatever script, as those of ASCII; nothing else of it.
OX_EXPORT std::string decimalDigits(std::string_view text);

// Whether the text is nothing but digits, in whatever script, and what people write between those
// of a telephone number: blanks, dashes, dots, slashes, brackets, a plus. True of such signs alone.
OX_EXPORT bool isOfDigits(std::string_view text);

// How many bytes the blank takes that begins there, of whatever script; 0 where none does.
OX_EXPORT std::size_t blankAt(std::string_view text, std::size_t at);

}  // namespace ox
