#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "ox/base/data.hpp"
#include "ox/base/export.hpp"
#include "ox/base/picture_file.hpp"

namespace ox {

// A picture: 8-bit RGBA, not premultiplied, rows top down without padding, upright. Never changed
// once it is made: it may be shared and looked at by any threads. Equal when size and pixels are.
class OX_EXPORT Image {
 public:
  // Without a pixel.
  Image() = default;
  Image(std::uint32_t itsWidth, std::uint32_t itsHeight, Pixels pixels)
      : width(itsWidth), height(itsHeight), pixels_(std::move(pixels)) {}
  // The picture in the file, which is of that size.
  Image(std::uint32_t itsWidth, std::uint32_t itsHeight, std::shared_ptr<const PictureFile> file)
      : width(itsWidth), height(itsHeight), file_(std::move(file)) {}

  const std::uint32_t width = 0;
  const std::uint32_t height = 0;

  // width * height * 4, borrowed from the picture. Those of a file may be decoded by the first call
  // and are kept; it throws std::bad_alloc when there is no memory for them, and so may the next.
  const Pixels& pixels() const { return file_ ? file_->pixels() : pixels_; }
  // The file that the picture came in, byte by byte; missing for any other.
  Data file() const { return file_ ? file_->bytes() : nullptr; }

  // Decodes nothing when both came in the same file.
  bool operator==(const Image& other) const;

 private:
  Pixels pixels_;  // of a picture without a file
  std::shared_ptr<const PictureFile> file_;
};

using ImagePtr = std::shared_ptr<const Image>;

}  // namespace ox
