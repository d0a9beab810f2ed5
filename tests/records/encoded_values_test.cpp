#include "ox/records/encoded_values.hpp"

#include <gtest/gtest.h>

#include "ox/records/property_codec.hpp"

namespace ox {
namespace {

TEST(EncodedValues, HoldWhatAStoreAsksOfThem) {
  PropertyBag bag;
  bag.set(property_id::kFirst, Object("Zoë"));
  EXPECT_EQ(encodedValues(bag).cardUid, std::nullopt);
  EXPECT_EQ(encodedValues(bag).custom, std::vector<PropertyId>());

  bag.set(property_id::kCardUid, Object("urn:uuid:1"));
  const auto height = property_table::add("Height", kABRealProperty);
  const auto shoes = property_table::add("Shoes", kABIntegerProperty);
  bag.set(height, Object(1.5));
  bag.set(shoes, Object(std::int64_t{39}));
  const auto encoded = encodedValues(bag);
  EXPECT_EQ(encoded.bytes, encodeProperties(bag));
  EXPECT_EQ(encoded.cardUid, Text("urn:uuid:1"));
  EXPECT_EQ(encoded.custom, (std::vector{shoes, height}));
}

TEST(EncodedValues, AreNotMadeOfWhatDoesNotFit) {
  PropertyBag bag;
  bag.set(property_id::kFirst, Object("Zoë"));
  EXPECT_EQ(misfitOf(bag), "");
  bag.set(property_id::kNote, Object(1.5));
  EXPECT_EQ(misfitOf(bag), "a value of the wrong type for Note");
}

}  // namespace
}  // namespace ox
