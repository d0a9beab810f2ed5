#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/image.hpp"

namespace ox {

// The pixels in little room: each byte as its difference from the same channel of the pixel before,
// then a zlib stream (RFC 1950). Exact. The picture must hold width * height * 4 bytes.
std::string packedPixels(const Image& image);

// Reads what packedPixels wrote. Null when it is damaged, is not exactly a picture of that size,
// or is larger than 64 M pixels; memory grows with what is really there, not with what is claimed.
ImagePtr imageOfPackedPixels(std::string_view packed, std::uint32_t width, std::uint32_t height);

}  // namespace ox
