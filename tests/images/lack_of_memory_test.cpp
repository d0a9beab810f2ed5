// The libraries that read and write pictures tell of memory that they did not get as they tell of
// damage; only malloc's sign parts the two.
#include <cerrno>
#include <gtest/gtest.h>
#include <new>

#include "ox/images/codecs.hpp"

namespace ox::images {
namespace {

TEST(PictureWithoutMemory, IsNotADamagedOne) {
  const auto failing = [](int sign) {
    return [sign]() -> Data {
      errno = sign;
      return nullptr;
    };
  };
  EXPECT_THROW(orNoMemory(failing(ENOMEM)), std::bad_alloc);
  EXPECT_EQ(orNoMemory(failing(0)), nullptr);
  EXPECT_EQ(orNoMemory(failing(EINVAL)), nullptr);
}

TEST(PictureWithoutMemory, LooksAtItsOwnWorkOnly) {
  errno = ENOMEM;
  EXPECT_EQ(decodeImage("\xFF\xD8\xFF damaged"), nullptr);
  errno = ENOMEM;
  EXPECT_EQ(imageSize("\xFF\xD8\xFF damaged"), std::nullopt);
  const auto file = orNoMemory([] {
    errno = ENOMEM;  // of something that was tried and done without
    return makeData("a picture");
  });
  EXPECT_EQ(*file, "a picture");
}

}  // namespace
}  // namespace ox::images
