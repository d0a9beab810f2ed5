// PNG, read and written by libpng.

#include <algorithm>
#include <cassert>
#include <csetjmp>
#include <cstring>
#include <memory>
#include <png.h>
#include <vector>

#include "ox/images/codecs.hpp"
#include "ox/images/image_codec.hpp"

// libpng leaves a failed call by longjmp. Every function that arms it holds only trivial locals and
// writes into a Reader that an outer function owns, so no destructor is ever jumped over.
namespace ox::images {
namespace {

struct Reader {
  explicit Reader(std::string_view bytes) : rest(bytes) {}
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }

  std::string_view rest;
  png_structp png = nullptr;
  png_infop info = nullptr;
  char message[96] = "damaged";

  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint64_t bitsPerPixel = 0;
};

void keepMessage(png_structp png, png_const_charp message) {
  auto* reader = static_cast<Reader*>(png_get_error_ptr(png));
  std::strncpy(reader->message, message, sizeof reader->message - 1);
  png_longjmp(png, 1);
}

void ignoreWarning(png_structp, png_const_charp) {}

void readBytes(png_structp png, png_bytep out, std::size_t size) {
  auto* reader = static_cast<Reader*>(png_get_io_ptr(png));
  if (size > reader->rest.size()) png_error(png, "truncated");
  std::memcpy(out, reader->rest.data(), size);
  reader->rest.remove_prefix(size);
}

bool readHeader(Reader& reader) {
  reader.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &reader, keepMessage, ignoreWarning);
  if (reader.png == nullptr) return false;
  if (setjmp(png_jmpbuf(reader.png)) != 0) return false;
  reader.info = png_create_info_struct(reader.png);
  if (reader.info == nullptr) return false;
  png_set_read_fn(reader.png, &reader, readBytes);
  // The library's own limit on each side is lower than ours on their product.
  png_set_user_limits(reader.png, static_cast<png_uint_32>(kMaxPixels),
                      static_cast<png_uint_32>(kMaxPixels));
  // Texts, profiles and the like say nothing about the pixels. A few kilobytes of them unpack to
  // megabytes, and a file may have a thousand.
  png_set_keep_unknown_chunks(reader.png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
  png_read_info(reader.png, reader.info);
  reader.width = png_get_image_width(reader.png, reader.info);
  reader.height = png_get_image_height(reader.png, reader.info);
  reader.bitsPerPixel = std::uint64_t{png_get_channels(reader.png, reader.info)} *
                        png_get_bit_depth(reader.png, reader.info);
  return true;
}

bool readPixels(Reader& reader, std::uint8_t* pixels) {
  if (setjmp(png_jmpbuf(reader.png)) != 0) return false;
  png_set_expand(reader.png);
  png_set_scale_16(reader.png);
  png_set_gray_to_rgb(reader.png);
  png_set_add_alpha(reader.png, 0xFF, PNG_FILLER_AFTER);
  const int passes = png_set_interlace_handling(reader.png);
  png_read_update_info(reader.png, reader.info);
  const std::size_t rowSize = std::size_t{reader.width} * 4;
  if (png_get_rowbytes(reader.png, reader.info) != rowSize) return false;
  for (int pass = 0; pass < passes; ++pass) {
    for (std::uint32_t y = 0; y < reader.height; ++y) {
      png_read_row(reader.png, pixels + y * rowSize, nullptr);
    }
  }
  png_read_end(reader.png, nullptr);
  return true;
}

// False when the file is too small for its pixels: deflate cannot shrink anything further than
// this.
bool isPlausible(const Reader& reader, std::size_t fileSize) {
  constexpr std::uint64_t kMaxRatio = 1032;
  const std::uint64_t rowSize = (reader.width * reader.bitsPerPixel + 7) / 8;
  return rowSize * reader.height <= (std::uint64_t{fileSize} + 1) * kMaxRatio;
}

// The size stands at a fixed place; it is looked at before the library allocates anything for it.
std::optional<ImageSize> claimedSize(std::string_view bytes) {
  constexpr std::size_t kWidthAt = 16;
  if (bytes.size() < kWidthAt + 8) return std::nullopt;
  const auto* at = reinterpret_cast<png_const_bytep>(bytes.data()) + kWidthAt;
  return ImageSize{png_get_uint_32(at), png_get_uint_32(at + 4)};
}

bool readAllowedHeader(Reader& reader, std::string_view bytes, std::string& reason) {
  const auto claimed = claimedSize(bytes);
  if (!claimed) {
    reason = "truncated";
    return false;
  }
  if (!isAllowedSize(claimed->width, claimed->height, reason)) return false;
  if (!readHeader(reader)) {
    reason = reader.message;
    return false;
  }
  if (isPlausible(reader, bytes.size())) return true;
  reason = kImplausible;
  return false;
}

}  // namespace

std::optional<Bitmap> decodePng(std::string_view bytes, std::string& reason) {
  Reader reader(bytes);
  if (!readAllowedHeader(reader, bytes, reason)) return std::nullopt;
  assert(std::uint64_t{reader.width} * reader.height <= kMaxPixels);
  Bitmap bitmap{.size = {reader.width, reader.height},
                .pixels = Pixels(std::size_t{reader.width} * reader.height * 4)};
  if (readPixels(reader, bitmap.pixels.data())) return bitmap;
  reason = reader.message;
  return std::nullopt;
}

std::optional<ImageSize> sizeOfPng(std::string_view bytes, std::string& reason) {
  Reader reader(bytes);
  if (!readAllowedHeader(reader, bytes, reason)) return std::nullopt;
  return ImageSize{reader.width, reader.height};
}

Data encodePng(const Image& image) {
  if (!isEncodable(image)) return nullptr;
  png_image header{};
  header.version = PNG_IMAGE_VERSION;
  header.width = image.width;
  header.height = image.height;
  header.format = PNG_FORMAT_RGBA;
  // The first call tells the size.
  const auto encode = [&](std::string* into) {
    png_alloc_size_t size = into != nullptr ? into->size() : 0;
    void* bytes = into != nullptr ? into->data() : nullptr;
    const bool done =
        png_image_write_to_memory(&header, bytes, &size, 0, image.pixels().data(), 0, nullptr) != 0;
    return done ? std::optional(size) : std::nullopt;
  };
  const auto size = orNoMemory([&] { return encode(nullptr); });
  if (!size) return nullptr;
  std::string file(*size, '\0');
  const auto written = orNoMemory([&] { return encode(&file); });
  if (!written) return nullptr;
  file.resize(*written);
  return makeData(std::move(file));
}

}  // namespace ox::images
