#include "ox/records/property_types.hpp"

#include <algorithm>
#include <gtest/gtest.h>

#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

TEST(StoredProperty, OfAnotherTypeThanIsKnownKeepsItsValueAndIsFoundByNobody) {
  const auto known = property_table::add("Boots", kABIntegerProperty);
  const auto beside = property_table::addStored("Boots", kABStringProperty);
  EXPECT_NE(beside, known);
  EXPECT_NE(beside, 0);
  EXPECT_EQ(property_table::addStored("Boots", kABStringProperty), beside);
  EXPECT_EQ(property_table::addStored("Boots", kABIntegerProperty), known);
  EXPECT_EQ(property_table::idOf(RecordKind::Person, "Boots"), known);
  EXPECT_EQ(property_table::typeOf(beside), kABStringProperty);
  EXPECT_EQ(property_table::nameOf(beside), "Boots");
  const auto all = property_table::all(RecordKind::Person);
  EXPECT_EQ(std::ranges::count(all, "Boots", &property_table::Entry::name), 1);

  PropertyBag both;
  both.set(known, Object(std::int64_t{43}));
  both.set(beside, Object("right"));
  const auto back = decodeProperties(encodeProperties(both));
  ASSERT_NE(back.find(known), nullptr);
  ASSERT_NE(back.find(beside), nullptr);
  EXPECT_EQ(std::get<Object>(*back.find(known)), Object(std::int64_t{43}));
  EXPECT_EQ(std::get<Object>(*back.find(beside)), Object("right"));
}

TEST(StoredProperty, IsRegisteredWhenItIsNew) {
  const auto id = property_table::addStored("Hat", kABRealProperty);
  EXPECT_EQ(property_table::idOf(RecordKind::Person, "Hat"), id);
  EXPECT_EQ(property_table::add("Hat", kABRealProperty), id);
  EXPECT_EQ(property_table::add("Hat", kABDateProperty), 0);
  EXPECT_EQ(property_table::addStored("Hat", static_cast<ABPropertyType>(99)), 0);
}

}  // namespace
}  // namespace ox
