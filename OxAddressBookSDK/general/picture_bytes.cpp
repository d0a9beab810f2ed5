#include "OxAddressBookSDK/general/picture_bytes.hpp"

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <zlib.h>

namespace ox {
namespace {

constexpr std::size_t kBytesPerPixel = 4;
constexpr std::uint64_t kMaxPixels = std::uint64_t{64} << 20;
// No zlib stream holds more than this many times its own size.
constexpr std::uint64_t kMaxRatio = 1032;
// Almost as small as the higher levels once the differences are taken, at several times the speed.
constexpr int kLevel = 1;

}  // namespace

std::string packedPixels(const Image& image) {
  std::vector<std::uint8_t> differences = image.pixels;
  for (std::size_t i = kBytesPerPixel; i < differences.size(); ++i) {
    differences[i] = static_cast<std::uint8_t>(image.pixels[i] - image.pixels[i - kBytesPerPixel]);
  }
  uLongf size = compressBound(differences.size());
  std::string packed(size, '\0');
  const int result = compress2(reinterpret_cast<Bytef*>(packed.data()), &size, differences.data(),
                               differences.size(), kLevel);
  if (result != Z_OK) throw std::bad_alloc();  // with a bound as room, nothing else can be wrong
  packed.resize(size);
  return packed;
}

ImagePtr imageOfPackedPixels(std::string_view packed, std::uint32_t width, std::uint32_t height) {
  const std::uint64_t pixels = std::uint64_t{width} * height;
  if (pixels > kMaxPixels || pixels * kBytesPerPixel > packed.size() * kMaxRatio) return nullptr;
  Image image{width, height, std::vector<std::uint8_t>(pixels * kBytesPerPixel)};

  uLongf size = image.pixels.size();
  uLong read = packed.size();
  const int result =
      uncompress2(image.pixels.data(), &size, reinterpret_cast<const Bytef*>(packed.data()), &read);
  if (result != Z_OK || size != image.pixels.size() || read != packed.size()) return nullptr;
  for (std::size_t i = kBytesPerPixel; i < image.pixels.size(); ++i) {
    image.pixels[i] = static_cast<std::uint8_t>(image.pixels[i] + image.pixels[i - kBytesPerPixel]);
  }
  return std::make_shared<const Image>(std::move(image));
}

}  // namespace ox
