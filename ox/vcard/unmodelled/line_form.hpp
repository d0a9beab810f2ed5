#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ox/vcard/card_version.hpp"
#include "ox/vcard/lines/content_line.hpp"

// The form of unmodelled lines: how they are preserved, and whether a version admits them (RFC
// 6350, section 3.3). Other than a reader, this is as strict as what is written has to be.

namespace ox::vcard {

// True for a text that a group or a property can be called.
bool isName(std::string_view text);
// What groups of lines are compared by.
std::string groupKey(std::string_view group);

// True when the line's name, parameters and base64 are well-formed in that version.
bool isWellFormed(std::string_view line, CardVersion version);
// True when the parameters, from their first semicolon on, are well-formed in that version.
bool areAdmitted(std::string_view parameters, CardVersion version);

// Appends the line as it is preserved: unfolded, without quoted-printable and CHARSET (line feeds
// become \n again), base64 without blanks, the bare words and encodings of vCard 2.1 as 3.0 writes
// them, texts with the escapes of 3.0 (value_form.hpp).
void appendPreserved(const ContentLine& line, Dialect dialect, std::string& out);
// The same with the value as it was read, line feeds and blanks included, and no claim of a charset
// or an encoding.
void appendPreservedAsRead(const ContentLine& line, std::string& out);

}  // namespace ox::vcard
