#include "ox/images/image_codec.hpp"

#include <array>
#include <cassert>

#include "ox/images/codecs.hpp"

namespace ox::images {
namespace {

using namespace std::string_view_literals;

struct Codec {
  std::string_view signature;
  ImagePtr (*decode)(std::string_view, std::string&);
  std::optional<ImageSize> (*size)(std::string_view, std::string&);
};

constexpr std::array kCodecs = {
    Codec{"\x89PNG\r\n\x1A\n"sv, decodePng, sizeOfPng},
    Codec{"\xFF\xD8\xFF"sv, decodeJpeg, sizeOfJpeg},
    Codec{"II*\0"sv, decodeTiff, sizeOfTiff},
    Codec{"MM\0*"sv, decodeTiff, sizeOfTiff},
};

const Codec* codecOf(std::string_view bytes) {
  for (const auto& codec : kCodecs) {
    if (bytes.starts_with(codec.signature)) return &codec;
  }
  return nullptr;
}

}  // namespace

ImagePtr decodeImage(std::string_view bytes, std::string* reason) {
  std::string why = bytes.empty() ? "empty" : "neither TIFF, PNG nor JPEG";
  const auto* codec = codecOf(bytes);
  auto image = codec != nullptr ? codec->decode(bytes, why) : nullptr;
  assert(!image || isEncodable(*image));  // not empty, within the limit, every pixel there
  if (reason != nullptr && !image) *reason = why;
  return image;
}

std::optional<ImageSize> imageSize(std::string_view bytes) {
  const auto* codec = codecOf(bytes);
  std::string reason;
  return codec != nullptr ? codec->size(bytes, reason) : std::nullopt;
}

bool isAllowedSize(std::uint64_t width, std::uint64_t height, std::string& reason) {
  if (width == 0 || height == 0) {
    reason = "no pixels";
    return false;
  }
  if (width > kMaxPixels || height > kMaxPixels || width * height > kMaxPixels) {
    reason = "too many pixels";
    return false;
  }
  return true;
}

bool isEncodable(const Image& image) {
  std::string reason;
  return isAllowedSize(image.width, image.height, reason) &&
         image.pixels.size() == std::size_t{image.width} * image.height * 4;
}

}  // namespace ox::images
