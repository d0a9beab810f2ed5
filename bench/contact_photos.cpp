#include "bench/contact_photos.hpp"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "ox/base/image.hpp"
#include "ox/images/image_codec.hpp"

namespace ox::bench {
namespace {

constexpr std::size_t kPhotos = 100;

// A gradient in random colours with noise over it; more noise makes more bytes.
Image drawing(Random& random, std::uint32_t side, unsigned noise) {
  Pixels pixels(std::size_t{side} * side * 4);
  const auto red = random.below(128);
  const auto green = random.below(128);
  for (std::uint32_t y = 0; y < side; ++y) {
    for (std::uint32_t x = 0; x < side; ++x) {
      auto* pixel = &pixels[(std::size_t{y} * side + x) * 4];
      const auto grain = random.below(noise + 1);
      const auto channel = [&](std::uint64_t value) {
        return static_cast<std::uint8_t>(std::min<std::uint64_t>(value + grain, 255));
      };
      pixel[0] = channel(red + x * 100 / side);
      pixel[1] = channel(green + y * 100 / side);
      pixel[2] = channel((x + y) * 100 / side);
      pixel[3] = 255;
    }
  }
  return {side, side, std::move(pixels)};
}

std::string base64Of(std::string_view bytes) {
  static constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      group <<= 8U;
      if (i + j < bytes.size()) group |= static_cast<unsigned char>(bytes[i + j]);
    }
    for (std::size_t j = 0; j < 4; ++j) {
      const bool filled = i + j <= bytes.size();
      text += filled ? kDigits[group >> (18U - 6U * j) & 63U] : '=';
    }
  }
  return text;
}

}  // namespace

PhotoPool::PhotoPool(Random& random) {
  while (photos_.size() < kPhotos) {
    const auto side = static_cast<std::uint32_t>(160 + 16 * random.below(5));
    const auto noise = static_cast<unsigned>(8 + random.below(40));
    photos_.push_back(*images::encodeJpeg(drawing(random, side, noise)));
  }
}

std::string PhotoPool::base64(Random& random, std::string_view mark) const {
  const auto& photo = random.of(photos_);
  const auto length = mark.size() + 2;
  std::string bytes = photo.substr(0, 2);  // start of image; a comment may follow at once
  bytes += "\xFF\xFE";
  bytes += static_cast<char>(length >> 8U);
  bytes += static_cast<char>(length & 0xFFU);
  bytes.append(mark).append(photo, 2);
  return base64Of(bytes);
}

}  // namespace ox::bench
