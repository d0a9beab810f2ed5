#pragma once

#include <string>
#include <string_view>

#include "ox/base/data.hpp"

namespace ox::sync {

// The stored form of a card's text: compressed, with a checksum, and without the picture where the
// picture is that one and the text can be made again of it to the byte. Null: none.
std::string packedCard(std::string_view text, const Data& picture);
// Whether the picture is needed to unpack it.
bool needsPicture(std::string_view packed);
// Throws DamagedBytes (ox/records/damaged_bytes.hpp) when it is not what packedCard gave, or the
// picture is another one.
std::string unpackedCard(std::string_view packed, const Data& picture);

// The same with another picture in the place of one that was left out.
std::string unpackedWithOther(std::string_view packed, const Data& picture);

}  // namespace ox::sync
