#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ox/base/image.hpp"

// Files that our own encoders never write, made for the tests.
namespace ox::images {

// Every pixel different, alpha included.
Image patterned(std::uint32_t width, std::uint32_t height);

struct PngKind {
  int colorType;
  int bitDepth;
  bool interlaced = false;
  bool transparentFirstColor = false;  // palette only
};
// `rows` as libpng takes them; a palette file has the colours red, green, blue, white.
std::string pngFile(std::uint32_t width, std::uint32_t height, PngKind kind, std::string rows);

// A picture of one pixel whose header claims that size.
std::string pngClaiming(std::uint32_t width, std::uint32_t height);

// The PNG with that chunk before its pixels, so many times.
std::string withChunks(const std::string& png, const std::string& type, const std::string& content,
                       int times);

// One flat colour; channels 1 (grey), 3 (RGB) or 4 (CMYK as stored).
std::string flatJpeg(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> color,
                     bool progressive = false);

// The JPEG with an Exif block that says that orientation, in either byte order.
std::string withExif(const std::string& jpeg, int orientation, bool bigEndian);

// Uncompressed rows, all in one strip or in strips of so many; little-endian.
std::string tiffFile(std::uint32_t width, std::uint32_t height, std::uint16_t bits,
                     std::uint16_t samples, std::uint16_t photometric, int orientation,
                     const std::string& rows, std::uint32_t rowsPerStrip = 0);

// The TIFF made so with that many more fields, unknown ones, whose value is the whole file before
// its directory.
std::string withFieldsOfAll(const std::string& tiff, int fields);

}  // namespace ox::images
