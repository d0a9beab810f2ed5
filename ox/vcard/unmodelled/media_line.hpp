#pragma once

#include <optional>
#include <string>

#include "ox/vcard/card_version.hpp"
#include "ox/vcard/lines/content_line.hpp"

// Unmodelled lines of pictures, logos, sounds and keys. vCard 3.0 has their bytes as base64 and the
// format's name as TYPE (RFC 2426, sections 3.1.4, 3.5.3, 3.6.6 and 3.7.2); 4.0 has data URIs and
// MEDIATYPE (RFC 6350, sections 5.7, 6.2.4, 6.6.3, 6.7.5 and 6.8.1). Both may refer to a resource.

namespace ox::vcard {

// The line in the form of the version; missing when it holds neither bytes nor a URI.
std::optional<std::string> mediaLine(const ContentLine& line, CardVersion version);

// True for such a line whose bytes stand in it as 4.0 has them. It is preserved as 3.0 has them, so
// that a record is the same whichever version it came by.
bool isMediaByData(const ContentLine& line);

}  // namespace ox::vcard
