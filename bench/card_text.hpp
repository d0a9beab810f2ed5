#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace ox::bench {

// The parts are made from left to right, so that the random numbers in them come in a fixed order.
std::string joined(std::initializer_list<std::string_view> parts);

// With the backslashes that a text value of vCard 3.0 takes (RFC 2426, section 4).
std::string escaped(std::string_view text);

// The ASCII letters and digits in it, in lower case; "desk" when there are none.
std::string asciiOf(std::string_view text);

// Appends a line and its CRLF, folded at 75 octets on character borders.
void appendFolded(std::string& out, std::string_view line);

}  // namespace ox::bench
