#pragma once

#include <string>
#include <string_view>

#include "ox/sync/dav/wire/multistatus_reader.hpp"

// The marks by which a card's or a book's state is known again.

namespace ox::sync {

// The ETag of a response exactly as received; empty where there is none, or one with control
// characters, which could not be sent back in a header.
std::string etagIn(const DavResponse& response);

// Marks of our own, where a server gives none.

inline constexpr std::string_view kCtagMark = "x-ctag:";
inline constexpr std::string_view kTextMark = "x-text:";

// A card's text with CRLF at the end of each line, the last one too: XML has made LF of them.
std::string withNetworkLineEnds(std::string_view text);

// The mark of a card without ETag, from its text as withNetworkLineEnds gives it.
std::string textMark(std::string_view text);

}  // namespace ox::sync
