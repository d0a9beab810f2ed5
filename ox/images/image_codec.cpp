#include "ox/images/image_codec.hpp"

#include <array>
#include <cassert>

#include "ox/images/codecs.hpp"

namespace ox {

struct PictureDecoder {
  static void keepFile(Image& image, const Data& file) { image.file.bytes_ = file; }
};

namespace images {
namespace {

using namespace std::string_view_literals;

struct Codec {
  std::string_view signature;
  std::shared_ptr<Image> (*decode)(std::string_view, std::string&);
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

std::shared_ptr<Image> decoded(std::string_view bytes, std::string* reason) {
  std::string why = bytes.empty() ? "empty" : "neither TIFF, PNG nor JPEG";
  const auto* codec = codecOf(bytes);
  auto image = codec == nullptr ? nullptr : orNoMemory([&] { return codec->decode(bytes, why); });
  assert(!image || isEncodable(*image));  // not empty, within the limit, every pixel there
  if (reason != nullptr && !image) *reason = why;
  return image;
}

}  // namespace

ImagePtr decodeImage(std::string_view bytes, std::string* reason) {
  return decoded(bytes, reason);
}

ImagePtr decodePictureFile(const Data& file, std::string* reason) {
  auto image = decoded(*file, reason);
  if (image) PictureDecoder::keepFile(*image, file);
  return image;
}

bool isTiff(std::string_view bytes) {
  const auto* codec = codecOf(bytes);
  return codec != nullptr && codec->decode == decodeTiff;
}

std::optional<ImageSize> imageSize(std::string_view bytes) {
  const auto* codec = codecOf(bytes);
  if (codec == nullptr) return std::nullopt;
  std::string reason;
  return orNoMemory([&] { return codec->size(bytes, reason); });
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

}  // namespace images
}  // namespace ox
