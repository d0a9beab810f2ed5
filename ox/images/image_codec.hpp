#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ox/base/data.hpp"
#include "ox/base/export.hpp"
#include "ox/base/image.hpp"

// Pictures as bytes: TIFF (6.0), PNG (RFC 2083) and JPEG (ITU-T T.81). Free functions without
// state, safe from any thread. Nothing is printed, whatever the bytes are. Each throws
// std::bad_alloc where there is no memory, also within the libraries that do the work.
namespace ox::images {

// 8192 x 8192. A file that claims more is refused before anything is allocated for it.
inline constexpr std::uint64_t kMaxPixels = std::uint64_t{64} << 20U;

struct ImageSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;

  bool operator==(const ImageSize&) const = default;
};

// The picture in the bytes, told by content: upright (the orientation of a TIFF or of a JPEG's Exif
// block is applied), 8 bits a channel (16-bit samples are scaled), grey, palette and CMYK turned
// into RGB. Null when the bytes are of no known kind, truncated, damaged, too large, or claim more
// pixels than so few bytes can hold; `reason` then says why in a few words.
OX_EXPORT ImagePtr decodeImage(std::string_view bytes, std::string* reason = nullptr);

// The same of bytes that the picture keeps as its file. The pixels of a JPEG are made when they are
// asked for; until then it is only read through, which takes half the time and finds the same.
OX_EXPORT ImagePtr pictureOfFile(const Data& file, std::string* reason = nullptr);

// The same of a file that is known to be whole, from wholeImageSize: nothing is read before
// somebody asks for pixels.
OX_EXPORT ImagePtr pictureOfWholeFile(const Data& file, ImageSize size);

// True when the bytes begin as a TIFF does.
OX_EXPORT bool isTiff(std::string_view bytes);

// Width and height as decodeImage would give them, from the header alone. Missing when it would
// refuse the header; the rest of the file may still be damaged.
OX_EXPORT std::optional<ImageSize> imageSize(std::string_view bytes);

// Width and height of the picture that decodeImage would give; missing where it would give none.
// Reads the whole file, and keeps no pixels.
OX_EXPORT std::optional<ImageSize> wholeImageSize(std::string_view bytes);

// Lossless: deflate-compressed RGBA; decodeImage gives the same picture back. Null for a picture
// that is empty, above kMaxPixels, or whose pixels do not fill its size.
OX_EXPORT Data encodeTiff(const Image& image);

// Lossless. Null as above.
OX_EXPORT Data encodePng(const Image& image);

// The library's default quality (75); transparency shows white. Null as above, and for a side over
// 65 500 pixels, which the format cannot hold.
OX_EXPORT Data encodeJpeg(const Image& image);

}  // namespace ox::images
