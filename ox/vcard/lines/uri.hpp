#pragma once

#include <string>
#include <string_view>

// RFC 3986.

namespace ox::vcard {

// The scheme that a text starts with (section 3.1), without its colon; empty when there is none.
std::string_view schemeOf(std::string_view text);

// True for a scheme, a colon and characters that may stand in a URI.
bool isUri(std::string_view text);

// Appends the bytes with percent escapes for whatever may not stand in a URI by itself (section
// 2.3; @ and + stay as they are).
void appendPercentEncoded(std::string_view bytes, std::string& out);

// Percent escapes undone (section 2.1); what is no escape stays.
std::string percentDecoded(std::string_view text);

}  // namespace ox::vcard
