#include "ox/images/orientation.hpp"

#include <cassert>
#include <cstdint>
#include <cstring>
#include <optional>
#include <utility>

namespace ox::images {
namespace {

using namespace std::string_view_literals;

// Reads numbers of a TIFF structure in its byte order; missing beyond its end.
class Fields {
 public:
  Fields(std::string_view bytes, bool bigEndian) : bytes_(bytes), bigEndian_(bigEndian) {}

  std::optional<std::uint32_t> number(std::size_t at, std::size_t size) const {
    if (at > bytes_.size() || bytes_.size() - at < size) return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t from = bigEndian_ ? at + i : at + size - 1 - i;
      value = (value << 8U) | static_cast<std::uint8_t>(bytes_[from]);
    }
    return value;
  }

 private:
  std::string_view bytes_;
  bool bigEndian_;
};

struct Point {
  std::uint32_t x;
  std::uint32_t y;
};

// Tells where the stored pixel lies that belongs at this place of the upright picture.
Point storedPlace(Point upright, ImageSize stored, int orientation) {
  const auto [x, y] = upright;
  const std::uint32_t right = stored.width - 1;
  const std::uint32_t bottom = stored.height - 1;
  switch (orientation) {
    case 2:
      return {right - x, y};
    case 3:
      return {right - x, bottom - y};
    case 4:
      return {x, bottom - y};
    case 5:
      return {y, x};
    case 6:
      return {y, bottom - x};
    case 7:
      return {right - y, bottom - x};
    case 8:
      return {right - y, x};
    default:
      return upright;
  }
}

}  // namespace

int exifOrientation(std::string_view segment) {
  constexpr std::uint32_t kOrientationTag = 0x0112;
  constexpr std::uint32_t kShort = 3;
  constexpr std::size_t kEntrySize = 12;

  if (!segment.starts_with("Exif\0\0"sv)) return 1;
  const auto tiff = segment.substr(6);
  if (!tiff.starts_with("II*\0"sv) && !tiff.starts_with("MM\0*"sv)) return 1;
  const Fields fields(tiff, tiff[0] == 'M');
  const auto directory = fields.number(4, 4);
  const auto count = directory ? fields.number(*directory, 2) : std::nullopt;
  if (!count) return 1;
  for (std::size_t i = 0; i < *count; ++i) {
    const std::size_t entry = std::size_t{*directory} + 2 + i * kEntrySize;
    const auto tag = fields.number(entry, 2);
    if (!tag) return 1;
    if (*tag != kOrientationTag) continue;
    const auto type = fields.number(entry + 2, 2);
    const auto value = fields.number(entry + 8, 2);
    const bool valid = type == kShort && value && *value >= 1 && *value <= 8;
    return valid ? static_cast<int>(*value) : 1;
  }
  return 1;
}

ImageSize uprighted(ImageSize stored, int orientation) {
  if (orientation >= 5 && orientation <= 8) std::swap(stored.width, stored.height);
  return stored;
}

Bitmap uprighted(Bitmap stored, int orientation) {
  if (orientation < 2 || orientation > 8) return stored;
  const ImageSize from = stored.size;
  const ImageSize to = uprighted(from, orientation);
  assert(stored.pixels.size() == std::size_t{from.width} * from.height * 4);
  Bitmap upright{.size = to, .pixels = Pixels(stored.pixels.size())};
  auto* out = upright.pixels.data();
  for (std::uint32_t y = 0; y < to.height; ++y) {
    for (std::uint32_t x = 0; x < to.width; ++x, out += 4) {
      const auto place = storedPlace({x, y}, from, orientation);
      assert(place.x < from.width && place.y < from.height);
      std::memcpy(out, &stored.pixels[(std::size_t{place.y} * from.width + place.x) * 4], 4);
    }
  }
  return upright;
}

}  // namespace ox::images
