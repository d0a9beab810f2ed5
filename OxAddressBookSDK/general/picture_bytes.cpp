#include "OxAddressBookSDK/general/picture_bytes.hpp"

#include <array>
#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>
#include <zlib.h>

namespace ox {
namespace {

constexpr std::size_t kBytesPerPixel = 4;
// No zlib stream holds more than this many times its own size.
constexpr std::uint64_t kMaxRatio = 1032;
// Almost as small as the higher levels once the differences are taken, at several times the speed.
constexpr int kLevel = 1;

// How many bytes such a picture takes unpacked. Missing when they are too many, or more than so
// few packed bytes can hold.
std::optional<std::size_t> plausibleSize(std::string_view packed, std::uint32_t width,
                                         std::uint32_t height) {
  const std::uint64_t pixels = std::uint64_t{width} * height;
  if (pixels > kMaxPackedPixels || pixels * kBytesPerPixel > packed.size() * kMaxRatio) return {};
  if (packed.size() > std::numeric_limits<uInt>::max()) return {};
  return static_cast<std::size_t>(pixels * kBytesPerPixel);
}

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
  packed.shrink_to_fit();  // it is kept, and the bound was as large as the pixels
  return packed;
}

bool arePackedPixels(std::string_view packed, std::uint32_t width, std::uint32_t height) {
  const auto size = plausibleSize(packed, width, height);
  if (!size) return false;
  z_stream stream{};
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  int result = inflateInit(&stream);
  std::array<std::uint8_t, 1U << 14U> window;
  while (result == Z_OK && stream.total_out <= *size) {
    stream.next_out = window.data();
    stream.avail_out = static_cast<uInt>(window.size());
    result = inflate(&stream, Z_NO_FLUSH);
  }
  inflateEnd(&stream);
  if (result == Z_MEM_ERROR) throw std::bad_alloc();
  return result == Z_STREAM_END && stream.total_out == *size && stream.avail_in == 0;
}

ImagePtr imageOfPackedPixels(std::string_view packed, std::uint32_t width, std::uint32_t height) {
  const auto plausible = plausibleSize(packed, width, height);
  if (!plausible) return nullptr;
  Image image{width, height, std::vector<std::uint8_t>(*plausible)};

  uLongf size = image.pixels.size();
  uLong read = packed.size();
  const int result =
      uncompress2(image.pixels.data(), &size, reinterpret_cast<const Bytef*>(packed.data()), &read);
  if (result == Z_MEM_ERROR) throw std::bad_alloc();
  if (result != Z_OK || size != image.pixels.size() || read != packed.size()) return nullptr;
  for (std::size_t i = kBytesPerPixel; i < image.pixels.size(); ++i) {
    image.pixels[i] = static_cast<std::uint8_t>(image.pixels[i] + image.pixels[i - kBytesPerPixel]);
  }
  return std::make_shared<const Image>(std::move(image));
}

}  // namespace ox
