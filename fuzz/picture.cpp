// Pictures: refused with a reason, or of the size that the header told, and the same when they were
// written as a TIFF.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <zlib.h>

#include "fuzz/require.hpp"
#include "ox/base/sqlite/plain_file.hpp"
#include "ox/images/image_codec.hpp"

namespace {

using namespace ox;

// The same with the checksums that its chunks have to have, so that what stands in them is read.
std::string withChecksums(std::string png) {
  constexpr std::size_t kSignature = 8;
  for (auto at = kSignature; at + 12 <= png.size();) {
    const std::size_t size = sqlite::bigEndian32(png, at);
    if (size > png.size() - at - 12) break;
    auto sum = ::crc32(0, reinterpret_cast<const Bytef*>(png.data() + at + 4),
                       static_cast<uInt>(size + 4));
    for (auto place = at + size + 12; place-- > at + size + 8; sum >>= 8U) {
      png[place] = static_cast<char>(sum);
    }
    at += size + 12;
  }
  return png;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Larger ones are refused by the same line, and only make the run slow.
  constexpr std::uint64_t kMostPixels = 1U << 12U;
  std::string bytes(reinterpret_cast<const char*>(data), size);
  if (bytes.starts_with("\x89PNG")) bytes = withChecksums(std::move(bytes));
  const auto told = images::imageSize(bytes);
  if (told && std::uint64_t{told->width} * told->height > kMostPixels) return 0;
  std::string reason;
  const auto image = images::decodeImage(bytes, &reason);
  const auto whole = images::wholeImageSize(bytes);
  fuzz::require(whole.has_value() == (image != nullptr));
  if (!image) {
    fuzz::require(!reason.empty());
    return 0;
  }
  fuzz::require(told && told->width == image->width && told->height == image->height);
  fuzz::require(whole == told);
  const auto tiff = images::encodeTiff(*image);
  const auto again = tiff ? images::decodeImage(*tiff) : nullptr;
  fuzz::require(again && *again == *image);
  fuzz::require(images::encodeJpeg(*image) != nullptr);
  return 0;
}
