#include "tests/images/picture_files.hpp"

// The library's header needs <cstdio> before it.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <png.h>
#include <vector>

namespace ox::images {
namespace {

std::string number(std::uint32_t value, int size, bool bigEndian) {
  std::string result;
  for (int i = 0; i < size; ++i) {
    const int shift = 8 * (bigEndian ? size - 1 - i : i);
    result += static_cast<char>((value >> shift) & 0xFFU);
  }
  return result;
}

// Of a PNG chunk's type and content.
std::string checksumOf(std::string_view bytes) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (const char byte : bytes) {
    crc ^= static_cast<std::uint8_t>(byte);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
  }
  return number(~crc, 4, true);
}

void append(png_structp png, png_bytep bytes, std::size_t size) {
  static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<char*>(bytes), size);
}

}  // namespace

Image patterned(std::uint32_t width, std::uint32_t height) {
  Pixels pixels;
  for (std::uint32_t i = 0; i < width * height; ++i) {
    for (const std::uint32_t factor : {7U, 31U, 101U, 59U}) {
      pixels.push_back(static_cast<std::uint8_t>(i * factor + factor));
    }
  }
  return {width, height, pixels};
}

std::string pngFile(std::uint32_t width, std::uint32_t height, PngKind kind, std::string rows) {
  std::string file;
  auto* png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  auto* info = png_create_info_struct(png);
  png_set_write_fn(png, &file, append, nullptr);
  png_set_IHDR(png, info, width, height, kind.bitDepth, kind.colorType,
               kind.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  const std::array<png_color, 4> palette = {png_color{255, 0, 0}, png_color{0, 255, 0},
                                            png_color{0, 0, 255}, png_color{255, 255, 255}};
  std::array<png_byte, 1> transparent = {0};
  if (kind.colorType == PNG_COLOR_TYPE_PALETTE) {
    png_set_PLTE(png, info, palette.data(), 4);
    if (kind.transparentFirstColor) png_set_tRNS(png, info, transparent.data(), 1, nullptr);
  }
  png_write_info(png, info);
  const std::size_t rowSize = png_get_rowbytes(png, info);
  rows.resize(rowSize * height);
  std::vector<png_bytep> pointers;
  for (std::uint32_t y = 0; y < height; ++y) {
    pointers.push_back(reinterpret_cast<png_bytep>(rows.data()) + y * rowSize);
  }
  png_write_image(png, pointers.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return file;
}

std::string pngClaiming(std::uint32_t width, std::uint32_t height) {
  // Written by the library for another size; then the size and the checksum over it are set anew.
  auto file = pngFile(1, 1, {PNG_COLOR_TYPE_RGBA, 8}, "");
  file.replace(16, 8, number(width, 4, true) + number(height, 4, true));
  file.replace(29, 4, checksumOf(std::string_view(file).substr(12, 17)));
  return file;
}

std::string withChunks(const std::string& png, const std::string& type, const std::string& content,
                       int times) {
  constexpr std::size_t kAfterHeader = 33;
  const auto chunk = number(static_cast<std::uint32_t>(content.size()), 4, true) + type + content +
                     checksumOf(type + content);
  std::string chunks;
  for (int i = 0; i < times; ++i) chunks += chunk;
  return png.substr(0, kAfterHeader) + chunks + png.substr(kAfterHeader);
}

std::string flatJpeg(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> color,
                     bool progressive) {
  jpeg_error_mgr errors{};
  jpeg_compress_struct codec{};
  codec.err = jpeg_std_error(&errors);
  jpeg_create_compress(&codec);
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&codec, &bytes, &size);
  codec.image_width = width;
  codec.image_height = height;
  codec.input_components = static_cast<int>(color.size());
  codec.in_color_space = color.size() == 1 ? JCS_GRAYSCALE : color.size() == 3 ? JCS_RGB : JCS_CMYK;
  jpeg_set_defaults(&codec);
  if (progressive) jpeg_simple_progression(&codec);
  jpeg_start_compress(&codec, TRUE);
  std::vector<std::uint8_t> row;
  for (std::uint32_t x = 0; x < width; ++x) row.insert(row.end(), color.begin(), color.end());
  JSAMPROW pointer = row.data();
  for (std::uint32_t y = 0; y < height; ++y) jpeg_write_scanlines(&codec, &pointer, 1);
  jpeg_finish_compress(&codec);
  std::string file(reinterpret_cast<char*>(bytes), size);
  jpeg_destroy_compress(&codec);
  std::free(bytes);
  return file;
}

std::string withExif(const std::string& jpeg, int orientation, bool bigEndian) {
  const auto field = [&](std::uint32_t value, int size) { return number(value, size, bigEndian); };
  std::string exif("Exif\0\0", 6);
  exif += bigEndian ? "MM" : "II";
  exif += field(42, 2) + field(8, 4);
  exif += field(2, 2);
  exif += field(0x0100, 2) + field(4, 2) + field(1, 4) + field(9999, 4);
  exif += field(0x0112, 2) + field(3, 2) + field(1, 4) +
          field(static_cast<std::uint32_t>(orientation), 2) + field(0, 2);
  exif += field(0, 4);
  const auto length = number(static_cast<std::uint32_t>(exif.size() + 2), 2, true);
  return jpeg.substr(0, 2) + "\xFF\xE1" + length + exif + jpeg.substr(2);
}

std::string tiffFile(std::uint32_t width, std::uint32_t height, std::uint16_t bits,
                     std::uint16_t samples, std::uint16_t photometric, int orientation,
                     const std::string& rows, std::uint32_t rowsPerStrip) {
  const auto field = [](std::uint32_t value, int size) { return number(value, size, false); };
  // Header, rows, a table of bit depths for as many samples, tables of the strips, directory.
  std::string file = "II" + field(42, 2) + field(0, 4) + rows;
  if (file.size() % 2 != 0) file += '\0';
  const auto depthsAt = static_cast<std::uint32_t>(file.size());
  for (int i = 0; i < samples; ++i) file += field(bits, 2);
  if (rowsPerStrip == 0) rowsPerStrip = height;
  const auto strips = (height + rowsPerStrip - 1) / rowsPerStrip;
  const auto size = static_cast<std::uint32_t>(rows.size());
  const auto stripSize = strips == 1 ? size : size / height * rowsPerStrip;
  const auto placesAt = static_cast<std::uint32_t>(file.size());
  for (std::uint32_t i = 0; i < strips; ++i) file += field(8 + i * stripSize, 4);
  const auto sizesAt = static_cast<std::uint32_t>(file.size());
  for (std::uint32_t i = 0; i < strips; ++i) {
    file += field(std::min(stripSize, size - i * stripSize), 4);
  }
  const auto directory = field(static_cast<std::uint32_t>(file.size()), 4);
  file.replace(4, 4, directory);
  const auto depth = samples > 2 ? depthsAt : bits;
  const std::vector<std::array<std::uint32_t, 4>> entries = {
      {256, 4, 1, width},
      {257, 4, 1, height},
      {258, 3, samples, depth},
      {259, 3, 1, 1},
      {262, 3, 1, photometric},
      {273, 4, strips, strips == 1 ? 8 : placesAt},
      {274, 3, 1, static_cast<std::uint32_t>(orientation)},
      {277, 3, 1, samples},
      {278, 4, 1, rowsPerStrip},
      {279, 4, strips, strips == 1 ? size : sizesAt},
  };
  file += field(static_cast<std::uint32_t>(entries.size()), 2);
  for (const auto& [tag, type, count, value] : entries) {
    file += field(tag, 2) + field(type, 2) + field(count, 4) + field(value, 4);
  }
  return file + field(0, 4);
}

std::string withFieldsOfAll(const std::string& tiff, int fields) {
  constexpr int kOwnFields = 10;
  const auto link = tiff.substr(tiff.size() - 4);
  auto file = tiff.substr(0, tiff.size() - 4);
  const auto directory = file.size() - kOwnFields * 12 - 2;
  file.replace(directory, 2, number(static_cast<std::uint32_t>(kOwnFields + fields), 2, false));
  for (int i = 0; i < fields; ++i) {
    file += number(static_cast<std::uint32_t>(30000 + i), 2, false) + number(1, 2, false) +
            number(static_cast<std::uint32_t>(directory), 4, false) + number(0, 4, false);
  }
  return file + link;
}

}  // namespace ox::images
