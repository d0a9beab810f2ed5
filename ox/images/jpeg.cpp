// JPEG, read and written by libjpeg, whose header needs <cstdio> before it.

#include <algorithm>
#include <array>
#include <cassert>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <jerror.h>
#include <jpeglib.h>
#include <memory>
#include <vector>

#include "ox/images/codecs.hpp"
#include "ox/images/orientation.hpp"

// libjpeg leaves a failed call by our longjmp. Every function that arms it holds only trivial
// locals and works on a state that an outer function owns, so no destructor is ever jumped over.
namespace ox::images {
namespace {

// The manager is the first member, so that the library's pointer to it is a pointer to the whole.
struct ErrorState {
  jpeg_error_mgr manager{};
  std::jmp_buf escape{};
  std::array<char, JMSG_LENGTH_MAX> message{"damaged"};
};

void leave(j_common_ptr codec) {
  auto* state = reinterpret_cast<ErrorState*>(codec->err);
  codec->err->format_message(codec, state->message.data());
  std::longjmp(state->escape, 1);
}

// A warning stands for pixels that were made up. Only those that touch none are let pass.
void weighWarning(j_common_ptr codec, int level) {
  constexpr std::array kHarmless = {JWRN_ADOBE_XFORM, JWRN_EXTRANEOUS_DATA, JWRN_JFIF_MAJOR,
                                    JWRN_BOGUS_ICC};
  if (level >= 0) return;
  const auto* found = std::find(kHarmless.begin(), kHarmless.end(), codec->err->msg_code);
  if (found == kHarmless.end()) leave(codec);
}

void ignoreMessage(j_common_ptr) {}

jpeg_error_mgr* prepare(ErrorState& state) {
  auto* manager = jpeg_std_error(&state.manager);
  manager->error_exit = leave;
  manager->emit_message = weighWarning;
  manager->output_message = ignoreMessage;
  return manager;
}

struct Reader {
  Reader() = default;
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { jpeg_destroy_decompress(&codec); }

  ErrorState error;
  jpeg_decompress_struct codec{};
  jpeg_progress_mgr progress{};
  int orientation = 1;
};

// A progressive file may hold any number of tiny passes over the whole picture.
void limitPasses(j_common_ptr common) {
  constexpr int kMaxPasses = 64;
  auto* codec = reinterpret_cast<j_decompress_ptr>(common);
  if (codec->input_scan_number > kMaxPasses) ERREXIT(codec, JERR_BAD_PROGRESSION);
}

bool readHeader(Reader& reader, std::string_view bytes) {
  auto& codec = reader.codec;
  codec.err = prepare(reader.error);
  if (setjmp(reader.error.escape) != 0) return false;
  jpeg_create_decompress(&codec);
  jpeg_mem_src(&codec, reinterpret_cast<const unsigned char*>(bytes.data()),
               static_cast<unsigned long>(bytes.size()));
  jpeg_save_markers(&codec, JPEG_APP0 + 1, 0xFFFF);
  jpeg_read_header(&codec, TRUE);
  reader.progress.progress_monitor = limitPasses;
  codec.progress = &reader.progress;
  return true;
}

// The first Exif segment counts; other kinds of APP1 (XMP) may stand before it.
int storedOrientation(const jpeg_decompress_struct& codec) {
  for (const auto* marker = codec.marker_list; marker != nullptr; marker = marker->next) {
    const std::string_view segment(reinterpret_cast<const char*>(marker->data),
                                   marker->data_length);
    if (marker->marker == JPEG_APP0 + 1 && segment.starts_with("Exif")) {
      return exifOrientation(segment);
    }
  }
  return 1;
}

// False when the file is too small for its pixels: every block of 8 x 8 takes at least one bit, and
// only arithmetic coding needs less.
bool isPlausible(const jpeg_decompress_struct& codec, std::size_t fileSize) {
  const std::uint64_t blocks =
      ((std::uint64_t{codec.image_width} + 7) / 8) * ((std::uint64_t{codec.image_height} + 7) / 8);
  return codec.arith_code != FALSE || blocks / 8 <= fileSize;
}

bool readAllowedHeader(Reader& reader, std::string_view bytes, std::string& reason) {
  if (!readHeader(reader, bytes)) {
    reason = reader.error.message.data();
    return false;
  }
  if (!isAllowedSize(reader.codec.image_width, reader.codec.image_height, reason)) return false;
  if (!isPlausible(reader.codec, bytes.size())) {
    reason = kImplausible;
    return false;
  }
  reader.orientation = storedOrientation(reader.codec);
  return true;
}

ImageSize storedSize(const Reader& reader) {
  return {reader.codec.image_width, reader.codec.image_height};
}

// Turns four channels of ink into red, green, blue and full alpha, in place.
void rgbFromInk(std::uint8_t* row, std::uint32_t width, bool inverted) {
  for (std::uint32_t x = 0; x < width; ++x, row += 4) {
    for (int i = 0; i < 4; ++i)
      row[i] = inverted ? row[i] : static_cast<std::uint8_t>(255 - row[i]);
    for (int i = 0; i < 3; ++i) row[i] = static_cast<std::uint8_t>((row[i] * row[3] + 127) / 255);
    row[3] = 255;
  }
}

// Puts each row where `rows` says, so many bytes behind the one before; with none, over it.
bool readRows(Reader& reader, std::uint8_t* rows, std::size_t step) {
  auto& codec = reader.codec;
  if (setjmp(reader.error.escape) != 0) return false;
  const bool ink = codec.jpeg_color_space == JCS_CMYK || codec.jpeg_color_space == JCS_YCCK;
  codec.out_color_space = ink ? JCS_CMYK : JCS_EXT_RGBA;
  jpeg_start_decompress(&codec);
  if (codec.output_components != 4) return false;
  // Programs that write this marker store ink inverted.
  const bool inverted = codec.saw_Adobe_marker != FALSE;
  while (codec.output_scanline < codec.output_height) {
    assert(codec.output_width <= codec.image_width);
    JSAMPROW row = rows + codec.output_scanline * step;
    jpeg_read_scanlines(&codec, &row, 1);
    if (ink) rgbFromInk(row, codec.output_width, inverted);
  }
  jpeg_finish_decompress(&codec);
  return true;
}

struct Writer {
  Writer() = default;
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() {
    jpeg_destroy_compress(&codec);
    std::free(bytes);
  }

  ErrorState error;
  jpeg_compress_struct codec{};
  unsigned char* bytes = nullptr;  // the library's, by malloc
  unsigned long size = 0;
};

void overWhite(const std::uint8_t* rgba, std::uint32_t width, std::uint8_t* rgb) {
  for (std::uint32_t x = 0; x < width; ++x, rgba += 4, rgb += 3) {
    const int alpha = rgba[3];
    for (int i = 0; i < 3; ++i) {
      rgb[i] = static_cast<std::uint8_t>((rgba[i] * alpha + 255 * (255 - alpha) + 127) / 255);
    }
  }
}

bool write(Writer& writer, const Image& image, const std::uint8_t* pixels,
           std::uint8_t* rowBuffer) {
  auto& codec = writer.codec;
  codec.err = prepare(writer.error);
  if (setjmp(writer.error.escape) != 0) return false;
  jpeg_create_compress(&codec);
  jpeg_mem_dest(&codec, &writer.bytes, &writer.size);
  codec.image_width = image.width;
  codec.image_height = image.height;
  codec.input_components = 3;
  codec.in_color_space = JCS_RGB;
  jpeg_set_defaults(&codec);
  jpeg_start_compress(&codec, TRUE);
  while (codec.next_scanline < codec.image_height) {
    const std::size_t from = std::size_t{codec.next_scanline} * image.width * 4;
    overWhite(pixels + from, image.width, rowBuffer);
    jpeg_write_scanlines(&codec, &rowBuffer, 1);
  }
  jpeg_finish_compress(&codec);
  return true;
}

}  // namespace

std::optional<Bitmap> decodeJpeg(std::string_view bytes, std::string& reason) {
  Reader reader;
  if (!readAllowedHeader(reader, bytes, reason)) return std::nullopt;
  const auto size = storedSize(reader);
  const auto step = std::size_t{size.width} * 4;
  Bitmap stored{.size = size, .pixels = Pixels(step * size.height)};
  if (!readRows(reader, stored.pixels.data(), step)) {
    reason = reader.error.message.data();
    return std::nullopt;
  }
  return uprighted(std::move(stored), reader.orientation);
}

std::optional<ImageSize> sizeOfJpeg(std::string_view bytes, std::string& reason) {
  Reader reader;
  if (!readAllowedHeader(reader, bytes, reason)) return std::nullopt;
  return uprighted(storedSize(reader), reader.orientation);
}

// Whether a file is damaged shows while its coefficients are unpacked, and all of them are, at any
// size; making pixels of them, which finds nothing wrong, is the smallest part at an eighth.
std::optional<ImageSize> sizeOfWholeJpeg(std::string_view bytes, std::string& reason) {
  Reader reader;
  if (!readAllowedHeader(reader, bytes, reason)) return std::nullopt;
  const auto size = storedSize(reader);
  reader.codec.scale_num = 1;
  reader.codec.scale_denom = 8;
  std::vector<std::uint8_t> row(std::size_t{size.width} * 4);
  if (!readRows(reader, row.data(), 0)) {
    reason = reader.error.message.data();
    return std::nullopt;
  }
  return uprighted(size, reader.orientation);
}

Data encodeJpeg(const Image& image) {
  if (!isEncodable(image)) return nullptr;
  const auto* pixels = image.pixels().data();
  std::vector<std::uint8_t> rowBuffer(std::size_t{image.width} * 3);
  return orNoMemory([&]() -> Data {
    Writer writer;
    if (!write(writer, image, pixels, rowBuffer.data())) return nullptr;
    return makeData(std::string(reinterpret_cast<const char*>(writer.bytes), writer.size));
  });
}

}  // namespace ox::images
