#pragma once

#include <span>
#include <string>
#include <string_view>

#include "ox/vcard/lines/content_line.hpp"

// Values of several parts: RFC 6350, section 3.4. Canonical is a value with the escapes of
// vCard 3.0 and 4.0 and no others.

namespace ox::vcard {

// True when unescaped commas part a list somewhere in the value.
bool hasList(std::string_view value, Dialect dialect);

// A value that a card parted at that mark, in canonical form.
std::string canonicalPieces(std::string_view value, char mark);

// Components that a card parted, in canonical form with semicolons between them; commas part lists
// within them.
std::string canonicalComponents(std::span<const std::string_view> components);

}  // namespace ox::vcard
