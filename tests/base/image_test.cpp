#include "ox/base/image.hpp"

#include <array>
#include <atomic>
#include <gtest/gtest.h>
#include <latch>
#include <new>
#include <thread>
#include <vector>

namespace ox {
namespace {

std::atomic<int> decodings = 0;
std::atomic<bool> hasMemory = true;

// The letters of the file are the bytes of its pixels.
Pixels counted(const std::string& bytes) {
  ++decodings;
  if (!hasMemory) throw std::bad_alloc();
  return {bytes.begin(), bytes.end()};
}

Image imageOf(const std::string& bytes) {
  return {2, 1, std::make_shared<const PictureFile>(makeData(bytes), counted)};
}

TEST(Image, OfAFileIsDecodedOnceAndWhenItsPixelsAreAskedFor) {
  decodings = 0;
  const auto image = imageOf("RGBArgba");
  const std::array copies = {image, image};
  EXPECT_EQ(*image.file(), "RGBArgba");
  EXPECT_EQ(decodings, 0);
  EXPECT_EQ(copies[0].pixels(), (Pixels{'R', 'G', 'B', 'A', 'r', 'g', 'b', 'a'}));
  EXPECT_EQ(&copies[1].pixels(), &copies[0].pixels());
  EXPECT_EQ(&image.pixels(), &copies[0].pixels());
  EXPECT_EQ(decodings, 1);
}

TEST(Image, OfAFileIsDecodedOnceForAllThreads) {
  decodings = 0;
  const auto image = imageOf("RGBArgba");
  std::latch start(4);
  std::array<const Pixels*, 4> seen{};
  std::array<std::uint8_t, 4> last{};
  {
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < seen.size(); ++i) {
      threads.emplace_back([&, i] {
        start.arrive_and_wait();
        seen[i] = &image.pixels();
        last[i] = seen[i]->back();
      });
    }
  }
  EXPECT_EQ(decodings, 1);
  EXPECT_EQ(seen, (std::array{seen[0], seen[0], seen[0], seen[0]}));
  EXPECT_EQ(last, (std::array<std::uint8_t, 4>{'a', 'a', 'a', 'a'}));
}

TEST(Image, ThatFoundNoMemoryIsDecodedByTheNextWhoAsks) {
  decodings = 0;
  const auto image = imageOf("RGBArgba");
  hasMemory = false;
  EXPECT_THROW(image.pixels(), std::bad_alloc);
  hasMemory = true;
  EXPECT_EQ(image.pixels().size(), 8U);
  EXPECT_EQ(decodings, 2);
}

TEST(Image, IsEqualByItsFileOrElseByItsPixels) {
  decodings = 0;
  EXPECT_EQ(imageOf("RGBArgba"), imageOf("RGBArgba"));
  EXPECT_EQ(decodings, 0);
  EXPECT_NE(imageOf("RGBArgba"), imageOf("RGBArgbA"));
  EXPECT_EQ(decodings, 2);
  const Image plain(2, 1, {'R', 'G', 'B', 'A', 'r', 'g', 'b', 'a'});
  EXPECT_EQ(imageOf("RGBArgba"), plain);
  EXPECT_EQ(plain, imageOf("RGBArgba"));
  EXPECT_NE(Image(1, 2, plain.pixels()), plain);
  EXPECT_EQ(Image(), Image());
  EXPECT_EQ(plain.file(), nullptr);
}

TEST(Image, ThatWasDecodedBeforeKeepsWhatItWasGiven) {
  decodings = 0;
  const Image image(1, 1,
                    std::make_shared<const PictureFile>(makeData("file"), Pixels{1, 2, 3, 4}));
  EXPECT_EQ(image.pixels(), (Pixels{1, 2, 3, 4}));
  EXPECT_EQ(*image.file(), "file");
  EXPECT_EQ(decodings, 0);
}

}  // namespace
}  // namespace ox
