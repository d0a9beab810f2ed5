#include "ox/images/thumbnail.hpp"

#include <gtest/gtest.h>

namespace ox::images {
namespace {

// Of grey pixels: brightness, row by row.
Image grey(std::uint32_t width, const std::vector<std::uint8_t>& brightness) {
  Pixels pixels;
  for (const auto value : brightness) pixels.insert(pixels.end(), {value, value, value, 255});
  return {width, static_cast<std::uint32_t>(brightness.size() / width), pixels};
}

TEST(SquareThumbnail, IsTheMeanOfTheMiddleSquare) {
  const auto wide = grey(6, {9, 0, 10, 20, 40, 9,  //
                             9, 4, 10, 20, 40, 9,  //
                             9, 0, 10, 50, 90, 9,  //
                             9, 4, 10, 50, 90, 9});
  EXPECT_EQ(*squareThumbnail(wide, 2), grey(2, {6, 30, 6, 70}));
  EXPECT_EQ(*squareThumbnail(wide, 1), grey(1, {28}));
}

TEST(SquareThumbnail, CutsWhatIsHigherThanWide) {
  EXPECT_EQ(*squareThumbnail(grey(1, {1, 2, 3}), 128), grey(1, {2}));
}

TEST(SquareThumbnail, SharesPixelsOutWhereTheSidesDoNotDivide) {
  EXPECT_EQ(*squareThumbnail(grey(3, {1, 2, 4, 1, 2, 4, 7, 8, 10}), 2), grey(2, {1, 3, 4, 6}));
}

TEST(SquareThumbnail, TakesNoColourFromWhatIsTransparent) {
  const Image image{2, 2, {200, 100, 0, 255, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0}};
  EXPECT_EQ(*squareThumbnail(image, 1), (Image{1, 1, {200, 100, 0, 64}}));
  const Image clear{1, 1, {9, 9, 9, 0}};
  EXPECT_EQ(*squareThumbnail(clear, 1), (Image{1, 1, {0, 0, 0, 0}}));
}

TEST(SquareThumbnail, IsMissingWhereThereIsNothingToShow) {
  EXPECT_EQ(squareThumbnail(Image{}, 8), nullptr);
  EXPECT_EQ(squareThumbnail(grey(1, {1}), 0), nullptr);
}

}  // namespace
}  // namespace ox::images
