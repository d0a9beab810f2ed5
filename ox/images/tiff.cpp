// TIFF, read and written by libtiff.

#include <algorithm>
#include <array>
#include <cassert>
#include <cstring>
#include <memory>
#include <span>
#include <tiffio.h>
#include <vector>

#include "ox/images/codecs.hpp"
#include "ox/images/orientation.hpp"
#include "ox/images/tiff_directory.hpp"
#include "ox/images/tiff_stream.hpp"

namespace ox::images {
namespace {

// The schemes that plain pictures use. Rare and long-abandoned ones stay unread: their decoders see
// little care.
constexpr std::array<std::uint16_t, 9> kSchemes = {
    COMPRESSION_NONE,      COMPRESSION_LZW,       COMPRESSION_ADOBE_DEFLATE,
    COMPRESSION_DEFLATE,   COMPRESSION_PACKBITS,  COMPRESSION_CCITTRLE,
    COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4, COMPRESSION_JPEG};

struct Header {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint16_t scheme = COMPRESSION_NONE;
  std::uint16_t samples = 1;
  std::uint16_t bits = 1;
  std::uint16_t photometric = 0;
  std::uint16_t planes = PLANARCONFIG_CONTIG;
  std::uint16_t alphaKind = EXTRASAMPLE_UNSPECIFIED;
  int orientation = ORIENTATION_TOPLEFT;
};

std::uint16_t shortField(TIFF* tiff, std::uint32_t tag) {
  std::uint16_t value = 0;
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

Header headerOf(TIFF* tiff) {
  Header header;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &header.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &header.height);
  header.scheme = shortField(tiff, TIFFTAG_COMPRESSION);
  header.samples = shortField(tiff, TIFFTAG_SAMPLESPERPIXEL);
  header.bits = shortField(tiff, TIFFTAG_BITSPERSAMPLE);
  header.photometric = shortField(tiff, TIFFTAG_PHOTOMETRIC);
  header.planes = shortField(tiff, TIFFTAG_PLANARCONFIG);
  header.orientation = shortField(tiff, TIFFTAG_ORIENTATION);
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds);
  if (count > 0 && kinds != nullptr) header.alphaKind = kinds[0];
  return header;
}

// False when so many pixels cannot come out of so small a file. The least that the fax schemes
// write is one bit for a row (an empty line); the others shrink to about a thousandth at most.
bool isPlausible(const Header& header, std::size_t fileSize) {
  const std::uint64_t pixels = std::uint64_t{header.width} * header.height;
  const std::uint64_t raw = pixels * header.samples * header.bits / 8;
  constexpr std::uint64_t kMaxRatio = 20000;
  const std::uint64_t ratio = header.scheme == COMPRESSION_NONE ? 1 : kMaxRatio;
  return raw <= std::uint64_t{fileSize} * ratio;
}

bool isReadable(const Header& header, std::size_t fileSize, std::string& reason) {
  constexpr std::uint16_t kMaxSamples = 8;
  if (!isAllowedSize(header.width, header.height, reason)) return false;
  if (std::find(kSchemes.begin(), kSchemes.end(), header.scheme) == kSchemes.end() ||
      header.samples > kMaxSamples || header.bits > 16) {
    reason = "a kind of TIFF that is not read";
    return false;
  }
  if (isPlausible(header, fileSize)) return true;
  reason = kImplausible;
  return false;
}

// True for rows of 8-bit RGB or RGBA, which are read as they are: the general way multiplies them
// by their alpha, and that cannot be undone exactly.
bool isPlain(TIFF* tiff, const Header& header) {
  return header.bits == 8 && header.photometric == PHOTOMETRIC_RGB &&
         header.planes == PLANARCONFIG_CONTIG && TIFFIsTiled(tiff) == 0 &&
         (header.samples == 3 ||
          (header.samples == 4 && header.alphaKind == EXTRASAMPLE_UNASSALPHA));
}

void addAlpha(const std::vector<std::uint8_t>& rgb, std::uint8_t* rgba) {
  assert(rgb.size() % 3 == 0);
  for (std::size_t at = 0; at < rgb.size(); at += 3, rgba += 4) {
    std::memcpy(rgba, rgb.data() + at, 3);
    rgba[3] = 255;
  }
}

// Reads whole strips, which the library unpacks several times faster than their rows one by one.
bool readPlain(TIFF* tiff, const Header& header, std::vector<std::uint8_t>& pixels) {
  const std::size_t rowSize = std::size_t{header.width} * header.samples;
  assert(pixels.size() == std::size_t{header.width} * header.height * 4);
  std::uint32_t rowsPerStrip = 0;
  TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
  if (TIFFScanlineSize64(tiff) != rowSize || rowsPerStrip == 0) return false;
  std::vector<std::uint8_t> rgb;
  std::uint32_t rows = 0;
  for (std::uint32_t y = 0, strip = 0; y < header.height; y += rows, ++strip) {
    rows = std::min(rowsPerStrip, header.height - y);
    auto* out = pixels.data() + std::size_t{y} * header.width * 4;
    if (header.samples == 3) rgb.resize(rows * rowSize);
    const auto size = static_cast<tmsize_t>(rows * rowSize);
    if (TIFFReadEncodedStrip(tiff, strip, rgb.empty() ? out : rgb.data(), size) != size) {
      return false;
    }
    addAlpha(rgb, out);
  }
  return true;
}

std::uint8_t withoutAlpha(std::uint32_t channel, std::uint32_t alpha) {
  if (alpha == 0) return 0;
  return static_cast<std::uint8_t>(std::min(255U, (channel * 255 + alpha / 2) / alpha));
}

// Reads every other kind by the library's own conversion, whose result is multiplied by alpha.
bool readConverted(TIFF* tiff, const Header& header, std::vector<std::uint8_t>& pixels) {
  std::vector<std::uint32_t> raster(std::size_t{header.width} * header.height);
  TIFFRGBAImage converter;
  std::array<char, 1024> message{};
  if (TIFFRGBAImageBegin(&converter, tiff, 1, message.data()) == 0) return false;
  // The pixels are read as they are stored; the orientation is applied afterwards, for every codec
  // alike.
  converter.orientation = ORIENTATION_TOPLEFT;
  converter.req_orientation = ORIENTATION_TOPLEFT;
  const bool read = TIFFRGBAImageGet(&converter, raster.data(), header.width, header.height) == 1;
  TIFFRGBAImageEnd(&converter);
  if (!read) return false;
  assert(pixels.size() == raster.size() * 4);
  auto* out = pixels.data();
  for (const std::uint32_t pixel : raster) {
    const std::uint32_t alpha = TIFFGetA(pixel);
    out[0] = withoutAlpha(TIFFGetR(pixel), alpha);
    out[1] = withoutAlpha(TIFFGetG(pixel), alpha);
    out[2] = withoutAlpha(TIFFGetB(pixel), alpha);
    out[3] = static_cast<std::uint8_t>(alpha);
    out += 4;
  }
  return true;
}

void describe(TIFF* tiff, const Image& image, std::uint32_t rowsPerStrip) {
  const std::array<std::uint16_t, 1> alphaKind = {EXTRASAMPLE_UNASSALPHA};
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.width);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.height);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 4);
  TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, alphaKind.data());
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
  TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  // Most of a whole-book load is this encoding; the higher levels save little once predicted.
  TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, 1);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
}

// Writes strips of about 256 kB, for the same reason as they are read.
bool writeImage(TIFF* tiff, const Image& image) {
  constexpr std::size_t kStripSize = 1U << 18U;
  const std::size_t rowSize = std::size_t{image.width} * 4;
  const auto rows = std::clamp<std::size_t>(kStripSize / rowSize, 1, image.height);
  describe(tiff, image, static_cast<std::uint32_t>(rows));
  std::uint32_t index = 0;
  for (auto rest = std::span(image.pixels()); !rest.empty(); ++index) {
    const auto part = rest.first(std::min(rest.size(), rows * rowSize));
    // The predictor works in the buffer it is given.
    std::vector<std::uint8_t> strip(part.begin(), part.end());
    const auto size = static_cast<tmsize_t>(strip.size());
    if (TIFFWriteEncodedStrip(tiff, index, strip.data(), size) != size) return false;
    rest = rest.subspan(part.size());
  }
  return TIFFFlush(tiff) == 1;
}

}  // namespace

std::optional<Bitmap> decodeTiff(std::string_view bytes, std::string& reason) {
  if (!isDirectorySound(bytes, reason)) return std::nullopt;
  TiffSource source(bytes);
  const auto tiff = source.open();
  if (!tiff) {
    reason = source.message();
    return std::nullopt;
  }
  const Header header = headerOf(tiff.get());
  if (!isReadable(header, bytes.size(), reason)) return std::nullopt;
  Bitmap stored{.size = {header.width, header.height},
                .pixels = Pixels(std::size_t{header.width} * header.height * 4)};
  const bool read = isPlain(tiff.get(), header) ? readPlain(tiff.get(), header, stored.pixels)
                                                : readConverted(tiff.get(), header, stored.pixels);
  if (!read) {
    reason = source.message();
    return std::nullopt;
  }
  return uprighted(std::move(stored), header.orientation);
}

std::optional<ImageSize> sizeOfTiff(std::string_view bytes, std::string& reason) {
  if (!isDirectorySound(bytes, reason)) return std::nullopt;
  TiffSource source(bytes);
  const auto tiff = source.open();
  if (!tiff) return std::nullopt;
  const Header header = headerOf(tiff.get());
  if (!isReadable(header, bytes.size(), reason)) return std::nullopt;
  return uprighted(ImageSize{header.width, header.height}, header.orientation);
}

Data encodeTiff(const Image& image) {
  if (!isEncodable(image)) return nullptr;
  return orNoMemory([&]() -> Data {
    TiffSink sink;
    auto tiff = sink.open();
    if (!tiff || !writeImage(tiff.get(), image)) return nullptr;
    tiff.reset();  // writes the directory
    return sink.failed() ? nullptr : makeData(sink.take());
  });
}

}  // namespace ox::images
