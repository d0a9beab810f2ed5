#pragma once

#include <cerrno>
#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <string_view>

#include "ox/base/image.hpp"
#include "ox/images/image_codec.hpp"

// What each codec file gives to image_codec.cpp. The bytes start with the format's signature. A
// failure is missing, with `reason` set.
namespace ox::images {

struct Bitmap {
  ImageSize size;
  Pixels pixels;
};

std::optional<Bitmap> decodePng(std::string_view bytes, std::string& reason);
std::optional<ImageSize> sizeOfPng(std::string_view bytes, std::string& reason);

std::optional<Bitmap> decodeJpeg(std::string_view bytes, std::string& reason);
// The size of what decodeJpeg would give, without its pixels; missing where it would give nothing.
std::optional<ImageSize> sizeOfWholeJpeg(std::string_view bytes, std::string& reason);
std::optional<ImageSize> sizeOfJpeg(std::string_view bytes, std::string& reason);

std::optional<Bitmap> decodeTiff(std::string_view bytes, std::string& reason);
std::optional<ImageSize> sizeOfTiff(std::string_view bytes, std::string& reason);

// False, with a reason, when there is no pixel or more than kMaxPixels.
bool isAllowedSize(std::uint64_t width, std::uint64_t height, std::string& reason);

// True for the pixels of a picture of that size: not empty, within kMaxPixels, complete.
bool isWhole(ImageSize size, const Pixels& pixels);
// True when the picture is one that can be encoded.
bool isEncodable(const Image& image);

// What the work gives. The libraries report a lack of memory as they report damage, but malloc
// leaves its sign (POSIX, malloc): throws std::bad_alloc then.
template <typename Work>
auto orNoMemory(Work work) {
  errno = 0;
  auto result = work();
  if (!result && errno == ENOMEM) throw std::bad_alloc();
  return result;
}

inline constexpr const char* kImplausible = "claims more pixels than its bytes can hold";

}  // namespace ox::images
