#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "ox/vcard/lines/content_line.hpp"

// Values of several parts: RFC 6350, section 3.4. Canonical is a value with the escapes of
// vCard 3.0 and 4.0 and no others.

namespace ox::vcard {

// True when unescaped commas part a list somewhere in the value.
bool hasList(std::string_view value, Dialect dialect);

// The parts of a value between those marks, outside of escapes and still escaped; one at least.
std::vector<std::string_view> partsOf(std::string_view value, char mark);

// True when components, one or several with semicolons between them, hold nothing but blanks and
// control characters.
bool areBlank(std::string_view components);

// A value that is one text, in canonical form.
std::string canonicalText(std::string_view value);

// A value that a card parted at that mark, in canonical form.
std::string canonicalPieces(std::string_view value, char mark);

// Components that a card parted, in canonical form with semicolons between them; commas part lists
// within them, but in vCard 2.1.
std::string canonicalComponents(std::span<const std::string_view> components, Dialect dialect);
// The same of a whole value, however many components it has.
std::string canonicalComponents(std::string_view value, Dialect dialect);

// A value of a vCard 2.1 line of which nobody knows what it is. A backslash that escapes no mark
// stands for itself there, as in a path ("C:\new").
std::string canonicalUnknown21(std::string_view value);

}  // namespace ox::vcard
