#pragma once

#include <string>
#include <string_view>

namespace ox {

// The decimal digits of the text, in whatever script, as those of ASCII; nothing else of it.
std::string decimalDigits(std::string_view text);

}  // namespace ox
