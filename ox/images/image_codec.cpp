#include "ox/images/image_codec.hpp"

#include <array>
#include <cassert>
#include <utility>

#include "ox/images/codecs.hpp"

namespace ox::images {
namespace {

using namespace std::string_view_literals;

struct Codec {
  std::string_view signature;
  std::optional<Bitmap> (*decode)(std::string_view, std::string&);
  std::optional<ImageSize> (*size)(std::string_view, std::string&);
  // Null where finding damage takes as much as decoding.
  std::optional<ImageSize> (*wholeSize)(std::string_view, std::string&);
};

constexpr std::array kCodecs = {
    Codec{"\x89PNG\r\n\x1A\n"sv, decodePng, sizeOfPng, nullptr},
    Codec{"\xFF\xD8\xFF"sv, decodeJpeg, sizeOfJpeg, sizeOfWholeJpeg},
    Codec{"II*\0"sv, decodeTiff, sizeOfTiff, nullptr},
    Codec{"MM\0*"sv, decodeTiff, sizeOfTiff, nullptr},
};

const Codec* codecOf(std::string_view bytes) {
  for (const auto& codec : kCodecs) {
    if (bytes.starts_with(codec.signature)) return &codec;
  }
  return nullptr;
}

// What `work` gives for the bytes and a reason to set; the reason is told where it gives nothing.
template <typename Work>
auto orReason(std::string_view bytes, std::string* reason, Work work) {
  std::string why = bytes.empty() ? "empty" : "neither TIFF, PNG nor JPEG";
  auto result = orNoMemory([&] { return work(why); });
  if (reason != nullptr && !result) *reason = why;
  return result;
}

std::optional<Bitmap> decoded(std::string_view bytes, std::string* reason) {
  const auto* codec = codecOf(bytes);
  auto bitmap = orReason(bytes, reason, [&](std::string& why) {
    return codec == nullptr ? std::nullopt : codec->decode(bytes, why);
  });
  // Not empty, within the limit, every pixel there.
  assert(!bitmap || isWhole(bitmap->size, bitmap->pixels));
  return bitmap;
}

Pixels pixelsOfWholeFile(const std::string& bytes) {
  return std::move(decoded(bytes, nullptr).value().pixels);
}

}  // namespace

ImagePtr decodeImage(std::string_view bytes, std::string* reason) {
  auto bitmap = decoded(bytes, reason);
  if (!bitmap) return nullptr;
  return std::make_shared<const Image>(bitmap->size.width, bitmap->size.height,
                                       std::move(bitmap->pixels));
}

ImagePtr pictureOfFile(const Data& file, std::string* reason) {
  const auto* codec = codecOf(*file);
  if (codec != nullptr && codec->wholeSize != nullptr) {
    const auto size =
        orReason(*file, reason, [&](std::string& why) { return codec->wholeSize(*file, why); });
    return size ? pictureOfWholeFile(file, *size) : nullptr;
  }
  auto bitmap = decoded(*file, reason);
  if (!bitmap) return nullptr;
  return std::make_shared<const Image>(
      bitmap->size.width, bitmap->size.height,
      std::make_shared<const PictureFile>(file, std::move(bitmap->pixels)));
}

ImagePtr pictureOfWholeFile(const Data& file, ImageSize size) {
  return std::make_shared<const Image>(
      size.width, size.height, std::make_shared<const PictureFile>(file, pixelsOfWholeFile));
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

std::optional<ImageSize> wholeImageSize(std::string_view bytes) {
  const auto* codec = codecOf(bytes);
  if (codec == nullptr) return std::nullopt;
  std::string reason;
  if (codec->wholeSize != nullptr) {
    return orNoMemory([&] { return codec->wholeSize(bytes, reason); });
  }
  const auto bitmap = decoded(bytes, &reason);
  return bitmap ? std::optional(bitmap->size) : std::nullopt;
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

bool isWhole(ImageSize size, const Pixels& pixels) {
  std::string reason;
  return isAllowedSize(size.width, size.height, reason) &&
         pixels.size() == std::size_t{size.width} * size.height * 4;
}

bool isEncodable(const Image& image) {
  return isWhole({image.width, image.height}, image.pixels());
}

}  // namespace ox::images
