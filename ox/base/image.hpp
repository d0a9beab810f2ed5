#pragma once

#include <cstdint>
#include <memory>
#include <vector>

namespace ox {

// A decoded picture: 8-bit RGBA, not premultiplied, rows top down without padding, upright.
// Immutable once shared. Equal when size and pixels are.
struct Image {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> pixels;  // width * height * 4

  bool operator==(const Image&) const = default;
};

using ImagePtr = std::shared_ptr<const Image>;

}  // namespace ox
