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
  support::refuseAllocationsFrom(large.pixels.size());
  const auto picture = ann->thumbnail();
  support::allowAllAllocations();
  EXPECT_FALSE(picture);
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(watch.lastReason(), "there is no memory for the picture of Ann, p");
  ASSERT_TRUE(ann->thumbnail());
  EXPECT_EQ(*ann->thumbnail(), large);
}

}  // namespace
}  // namespace ox::test
