#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "ox/base/data.hpp"

namespace ox {

// The file that the pixels of a picture were read from, byte by byte. Whoever decodes it puts it
// there; no copy of a picture has it, for a copy may be changed.
class PictureFile {
 public:
  PictureFile() = default;
  PictureFile(const PictureFile&) noexcept {}
  PictureFile& operator=(const PictureFile& other) noexcept {
    if (this != &other) bytes_ = nullptr;
    return *this;
  }
  ~PictureFile() = default;

  const Data& bytes() const { return bytes_; }  // missing where there is none

 private:
  friend struct PictureDecoder;  // of ox/images

  Data bytes_;
};

// A decoded picture: 8-bit RGBA, not premultiplied, rows top down without padding, upright.
// Immutable once shared. Equal when size and pixels are.
struct Image {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;  // width * height * 4
  PictureFile file = {};

  bool operator==(const Image& other) const {
    return width == other.width && height == other.height && pixels == other.pixels;
  }
};

using ImagePtr = std::shared_ptr<const Image>;

}  // namespace ox
