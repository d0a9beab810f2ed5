#include <gtest/gtest.h>
#include <new>
#include <string>

#include "ox/base/object.hpp"
#include "tests/support/allocation_limit.hpp"

namespace ox {
namespace {

constexpr std::size_t kLarge = std::size_t{1} << 20;

TEST(Object, WhoseCopyFindsNoMemoryIsNotDestroyed) {
  const Object text(std::string(kLarge, 'x'));
  Object assigned("before");
  const Array list{text};
  support::refuseAllocationsFrom(kLarge);
  EXPECT_THROW(static_cast<void>(Object(text)), std::bad_alloc);
  EXPECT_THROW(assigned = text, std::bad_alloc);
  EXPECT_THROW(static_cast<void>(Array(list)), std::bad_alloc);
  support::allowAllAllocations();
  EXPECT_EQ(assigned, Object("before"));
  EXPECT_EQ(Object(text), text);
}

}  // namespace
}  // namespace ox
