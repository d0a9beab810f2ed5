#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/vcard/writer.hpp"

namespace ox::vcard {

// A kept line as it may stand in a card of that version beside what properties give: as it is, or
// with its value in the form of the version. Missing when the version cannot say it:
//
// - a name that the version does not know, or that properties give already;
// - parameters that are not well-formed, base64 that is none;
// - values of another form: a picture that is no URI, a REV without time in 4.0.
std::optional<std::string> lineInVersion(std::string_view line, CardVersion version);

// True for a property of which a card has one at most (RFC 6350, section 3.3).
bool isOnlyOnce(std::string_view name);

}  // namespace ox::vcard
