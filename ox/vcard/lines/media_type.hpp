#pragma once

#include <string>
#include <string_view>

// What cards call pictures: media types in vCard 4.0, TYPE in 3.0 (RFC 2426, section 3.1.4).

namespace ox::vcard {

// The media type that the first bytes tell; empty when they tell none.
std::string_view mediaTypeOf(std::string_view bytes);

// A media type in lower case; empty when the text is none.
std::string mediaType(std::string_view text);

// TYPE for a picture of that media type: the format's name in upper case, or the whole type when it
// is no image. Empty without a type.
std::string typeOfMedia(std::string_view media);

}  // namespace ox::vcard
