#include "ox/OxAddressBookSDK/objects/OxCountry.hpp"

#include <gtest/gtest.h>

#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

TEST(OxCountry, IsTheUsersOwnAndNeverMissing) {
  support::setUserLocale("de_AT.UTF-8");
  EXPECT_EQ(OxCountry::local()->code(), "AT");
  support::setUserLocale("ja");
  EXPECT_EQ(OxCountry::local()->code(), "JP");
  support::setUserLocale("C");
  EXPECT_EQ(OxCountry::local()->code(), "US");
}

}  // namespace
}  // namespace ox
