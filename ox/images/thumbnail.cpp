#include "ox/images/thumbnail.hpp"

#include <algorithm>
#include <array>

namespace ox::images {
namespace {

// Which pixels of the picture one of the thumbnail stands for.
struct Box {
  std::uint32_t left;
  std::uint32_t top;
  std::uint32_t right;
  std::uint32_t bottom;
};

// `pixels` are those of a picture of that width.
std::array<std::uint8_t, 4> meanOf(const Pixels& pixels, std::uint32_t width, const Box& box) {
  std::array<std::uint64_t, 3> color{};
  std::uint64_t alpha = 0;
  for (auto y = box.top; y < box.bottom; ++y) {
    const auto* pixel = &pixels[(std::size_t{y} * width + box.left) * 4];
    for (auto x = box.left; x < box.right; ++x, pixel += 4) {
      for (std::size_t i = 0; i < color.size(); ++i) color[i] += std::uint64_t{pixel[i]} * pixel[3];
      alpha += pixel[3];
    }
  }
  std::array<std::uint8_t, 4> mean{};
  if (alpha == 0) return mean;
  const auto count = std::uint64_t{box.right - box.left} * (box.bottom - box.top);
  for (std::size_t i = 0; i < color.size(); ++i) {
    mean[i] = static_cast<std::uint8_t>((color[i] + alpha / 2) / alpha);
  }
  mean[3] = static_cast<std::uint8_t>((alpha + count / 2) / count);
  return mean;
}

// Where the pixel of that number begins, in a row of `from` pixels that become `to`.
std::uint32_t beginOf(std::uint32_t number, std::uint32_t from, std::uint32_t to) {
  return static_cast<std::uint32_t>(std::uint64_t{number} * from / to);
}

}  // namespace

ImagePtr squareThumbnail(const Image& image, std::uint32_t side) {
  const auto square = std::min(image.width, image.height);
  const auto size = std::min(square, side);
  if (size == 0) return nullptr;
  const auto left = (image.width - square) / 2;
  const auto top = (image.height - square) / 2;
  const auto& pixels = image.pixels();
  Pixels small;
  small.reserve(std::size_t{size} * size * 4);
  for (std::uint32_t y = 0; y < size; ++y) {
    for (std::uint32_t x = 0; x < size; ++x) {
      const auto pixel =
          meanOf(pixels, image.width,
                 {left + beginOf(x, square, size), top + beginOf(y, square, size),
                  left + beginOf(x + 1, square, size), top + beginOf(y + 1, square, size)});
      small.insert(small.end(), pixel.begin(), pixel.end());
    }
  }
  return std::make_shared<const Image>(size, size, std::move(small));
}

}  // namespace ox::images
