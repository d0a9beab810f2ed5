#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "ox/base/image.hpp"

namespace ox {

// 8192 x 8192.
inline constexpr std::uint64_t kMaxPackedPixels = std::uint64_t{64} << 20U;

// The pixels in little room: each byte as its difference from the same channel of the pixel before,
// then a zlib stream (RFC 1950). Exact. The picture must hold width * height * 4 bytes.
std::string packedPixels(const Image& image);

// True when the bytes are exactly a picture of that size as packedPixels writes it, of at most
// kMaxPackedPixels. They are unpacked at once while they are small, else through a window, so it
// takes little memory.
bool arePackedPixels(std::string_view packed, std::uint32_t width, std::uint32_t height);

// Reads what packedPixels wrote. Null when arePackedPixels would be false; memory grows with what
// is really there, not with what is claimed.
ImagePtr imageOfPackedPixels(std::string_view packed, std::uint32_t width, std::uint32_t height);

}  // namespace ox
