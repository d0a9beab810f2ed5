#pragma once

#include <string>

#include "ox/vcard/lines/content_line.hpp"

// How the values of unmodelled lines are escaped: RFC 2426, section 5, and RFC 6350, section 3.4.

namespace ox::vcard {

// The value as vCard 3.0 and 4.0 escape it: that of a text, a list of texts or components that are
// known to be such, and all but URIs of vCard 2.1, whose components are texts. Any other as it
// stands, since nobody knows what it is.
std::string canonicalValue(const ContentLine& line, Dialect dialect);

}  // namespace ox::vcard
