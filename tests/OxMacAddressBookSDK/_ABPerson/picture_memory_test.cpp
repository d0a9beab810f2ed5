#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/allocation_limit.hpp"

namespace ox::test {
namespace {

TEST(Thumbnail, ThatFindsNoMemoryIsAFailureThatNamesThePerson) {
  const failures::Watch watch;
  const Image large{512, 512, std::vector<std::uint8_t>(std::size_t{512} * 512 * 4)};
  StoreBuilder().person("p", {.first = "Ann", .image = images::encodeTiff(large)});
  const auto ann = person("p");
  support::refuseAllocationsFrom(large.pixels().size());
  const auto picture = ann->thumbnail();
  support::allowAllAllocations();
  EXPECT_FALSE(picture);
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(watch.lastReason(), "there is no memory for the picture of Ann, p");
  ASSERT_TRUE(ann->thumbnail());
  EXPECT_EQ(*ann->thumbnail(), large);
}

TEST(Thumbnail, OfAJpegIsItsBytesUntilSomebodyAsksForPixels) {
  const failures::Watch watch;
  const Image large(512, 512, Pixels(std::size_t{512} * 512 * 4, 200));
  const auto jpeg = images::encodeJpeg(large);
  StoreBuilder().person("p", {.first = "Ann", .image = jpeg});
  const auto ann = person("p");
  support::refuseAllocationsFrom(large.pixels().size());
  const auto picture = ann->thumbnail();
  ASSERT_TRUE(picture);
  const bool isSame = *picture == *ann->thumbnail();
  EXPECT_THROW(picture->pixels(), std::bad_alloc);
  const auto counts = watch.counts();
  const auto line = ann->vcardImageDataString();
  support::allowAllAllocations();
  EXPECT_TRUE(isSame);
  EXPECT_EQ(*picture->file(), *jpeg);
  EXPECT_EQ(counts.failures, 0U);
  EXPECT_EQ(picture->pixels(), images::decodeImage(*jpeg)->pixels());
  EXPECT_FALSE(line);
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(watch.lastReason(), "there is no memory for the picture of Ann, p");
  EXPECT_TRUE(ann->vcardImageDataString());
}

}  // namespace
}  // namespace ox::test
