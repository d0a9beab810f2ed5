#include "ox/OxAddressBookSDK/general/picture_bytes.hpp"

#include <array>
#include <cstddef>
#include <libdeflate.h>
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
// What a picture may take to be looked at whole, which is three times as fast as in pieces.
constexpr std::size_t kWholeAtOnce = std::size_t{4} << 20U;

using Compressor = std::unique_ptr<libdeflate_compressor, decltype(&libdeflate_free_compressor)>;
using Decompressor =
    std::unique_ptr<libdeflate_decompressor, decltype(&libdeflate_free_decompressor)>;

// How many bytes such a picture takes unpacked. Missing when they are too many, or more than so
// few packed bytes can hold.
std::optional<std::size_t> plausibleSize(std::string_view packed, std::uint32_t width,
                                         std::uint32_t height) {
  const std::uint64_t pixels = std::uint64_t{width} * height;
  if (pixels > kMaxPackedPixels || pixels * kBytesPerPixel > packed.size() * kMaxRatio) return {};
  if (packed.size() > std::numeric_limits<uInt>::max()) return {};
  return static_cast<std::size_t>(pixels * kBytesPerPixel);
}

// True when the bytes unpack to exactly so many, which are left in `room`.
bool unpack(std::string_view packed, std::uint8_t* room, std::size_t size) {
  const Decompressor decompressor(libdeflate_alloc_decompressor(), libdeflate_free_decompressor);
  if (!decompressor) throw std::bad_alloc();
  std::size_t read = 0;
  const auto result = libdeflate_zlib_decompress_ex(decompressor.get(), packed.data(),
                                                    packed.size(), room, size, &read, nullptr);
  return result == LIBDEFLATE_SUCCESS && read == packed.size();
}

// The same through a small window, whatever the size.
bool unpacksTo(std::string_view packed, std::size_t size) {
  z_stream stream{};
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  int result = inflateInit(&stream);
  std::array<std::uint8_t, 1U << 14U> window;
  while (result == Z_OK && stream.total_out <= size) {
    stream.next_out = window.data();
    stream.avail_out = static_cast<uInt>(window.size());
    result = inflate(&stream, Z_NO_FLUSH);
  }
  inflateEnd(&stream);
  if (result == Z_MEM_ERROR) throw std::bad_alloc();
  return result == Z_STREAM_END && stream.total_out == size && stream.avail_in == 0;
}

}  // namespace

std::string packedPixels(const Image& image) {
  const auto& pixels = image.pixels();
  Pixels differences = pixels;
  for (std::size_t i = kBytesPerPixel; i < differences.size(); ++i) {
    differences[i] = static_cast<std::uint8_t>(pixels[i] - pixels[i - kBytesPerPixel]);
  }
  const Compressor compressor(libdeflate_alloc_compressor(kLevel), libdeflate_free_compressor);
  if (!compressor) throw std::bad_alloc();
  std::string packed(libdeflate_zlib_compress_bound(compressor.get(), differences.size()), '\0');
  const auto size = libdeflate_zlib_compress(compressor.get(), differences.data(),
                                             differences.size(), packed.data(), packed.size());
  packed.resize(size);
  packed.shrink_to_fit();  // it is kept, and the bound was as large as the pixels
  return packed;
}

bool arePackedPixels(std::string_view packed, std::uint32_t width, std::uint32_t height) {
  const auto size = plausibleSize(packed, width, height);
  if (!size) return false;
  if (*size > kWholeAtOnce) return unpacksTo(packed, *size);
  const auto room = std::make_unique_for_overwrite<std::uint8_t[]>(*size);
  return unpack(packed, room.get(), *size);
}

ImagePtr imageOfPackedPixels(std::string_view packed, std::uint32_t width, std::uint32_t height) {
  const auto size = plausibleSize(packed, width, height);
  if (!size) return nullptr;
  Pixels pixels(*size);
  if (!unpack(packed, pixels.data(), *size)) return nullptr;
  for (std::size_t i = kBytesPerPixel; i < pixels.size(); ++i) {
    pixels[i] = static_cast<std::uint8_t>(pixels[i] + pixels[i - kBytesPerPixel]);
  }
  return std::make_shared<const Image>(width, height, std::move(pixels));
}

}  // namespace ox
