#pragma once

#include <string>
#include <string_view>

// Marks of our own, where a server gives none.

namespace ox::sync {

inline constexpr std::string_view kCtagMark = "x-ctag:";
inline constexpr std::string_view kTextMark = "x-text:";

// A card's text with CRLF at the end of each line, the last one too: XML has made LF of them.
std::string withNetworkLineEnds(std::string_view text);

// The mark of a card without ETag, from its text as withNetworkLineEnds gives it.
std::string textMark(std::string_view text);

}  // namespace ox::sync
