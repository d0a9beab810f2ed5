#include "ox/records/property_codec.hpp"

#include <gtest/gtest.h>
#include <string>

#include "ox/base/checksum.hpp"
#include "ox/records/fingerprint.hpp"

namespace ox {
namespace {

PropertyBag fullBag() {
  PropertyBag bag;
  bag.set(property_id::kFirst, Object("Zoë"));
  bag.set(property_id::kNote, Object(""));
  bag.set(property_id::kBirthday, Object(*Date::fromText("--02-29")));
  MultiValue phones;
  phones.add("+49 1", "_$!<Work>!$_");
  phones.primary = phones.add("+49 2", std::nullopt);
  bag.set(property_id::kPhone, std::make_shared<const MultiValue>(phones));
  MultiValue addresses;
  addresses.add(Dictionary{{"Street", "Hauptstraße 1\n2. Stock"}, {"City", ""}}, "");
  bag.set(property_id::kAddress, std::make_shared<const MultiValue>(addresses));
  bag.set(property_id::kCardUid, Object("urn:uuid:1"));
  bag.set(property_id::kUnmodelledLines, Object(Array{"X-A:1", "X-B;P=Q:2"}));
  const auto real = property_table::add("Height", kABRealProperty);
  const auto number = property_table::add("Shoes", kABMultiIntegerProperty);
  const auto bytes = property_table::add("Key", kABDataProperty);
  bag.set(real, Object(-0.5));
  MultiValue shoes;
  shoes.add(std::int64_t{INT64_MIN}, "left");
  shoes.add(std::int64_t{INT64_MAX}, "right");
  bag.set(number, std::make_shared<const MultiValue>(shoes));
  bag.set(bytes, Object(makeData(std::string("\0\xFF", 2))));
  return bag;
}

bool sameBag(const PropertyBag& a, const PropertyBag& b) {
  if (a.entries().size() != b.entries().size()) return false;
  for (const auto& [id, value] : a.entries()) {
    const auto* other = b.find(id);
    if (other == nullptr || !sameValue(value, *other)) return false;
  }
  return true;
}

TEST(PropertyCodec, GivesEveryKindOfValueBack) {
  const auto bag = fullBag();
  EXPECT_TRUE(sameBag(decodeProperties(encodeProperties(bag)), bag));
  EXPECT_TRUE(decodeProperties(encodeProperties({})).empty());
}

TEST(PropertyCodec, RefusesEveryCutAndEveryFlippedBit) {
  const auto bytes = encodeProperties(fullBag());
  for (std::size_t size = 0; size < bytes.size(); ++size) {
    EXPECT_THROW(decodeProperties(std::string_view(bytes).substr(0, size)), DamagedProperties)
        << size;
  }
  for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
    auto flipped = bytes;
    flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
    EXPECT_THROW(decodeProperties(flipped), DamagedProperties) << bit;
  }
}

TEST(PropertyCodec, KeepsAPropertyThatALaterVersionHasNumbered) {
  constexpr PropertyId kUnknown = 48;
  ASSERT_EQ(property_table::typeOf(kUnknown), kABErrorInProperty);
  std::string bytes{1, kUnknown, 1, 1, 'x'};  // of this version of the form: a text of one letter
  const auto checksum = checksum64(bytes);
  bytes.append(reinterpret_cast<const char*>(&checksum), sizeof checksum);
  const auto bag = decodeProperties(bytes);
  ASSERT_NE(bag.text(kUnknown), nullptr);
  EXPECT_EQ(*bag.text(kUnknown), "x");
  EXPECT_EQ(encodeProperties(bag), bytes);
}

TEST(PropertyCodec, RefusesWhatCannotBeStored) {
  PropertyBag bag;
  bag.set(property_id::kFirst, Object(std::make_shared<const Image>()));
  EXPECT_THROW(encodeProperties(bag), std::invalid_argument);
}

TEST(Fingerprint, LooksAtContentOnly) {
  const auto one = fullBag();
  auto two = fullBag();  // fresh entry identifiers
  two.set(property_id::kCardUid, Object("another"));
  ASSERT_FALSE(sameBag(one, two));
  EXPECT_EQ(contentFingerprint(one, nullptr), contentFingerprint(two, nullptr));
  EXPECT_TRUE(sameContent(one, two));

  EXPECT_NE(contentFingerprint(one, nullptr), contentFingerprint(one, makeData("picture")));
  two.set(property_id::kNote, Object("other"));
  EXPECT_NE(contentFingerprint(one, nullptr), contentFingerprint(two, nullptr));
  EXPECT_FALSE(sameContent(one, two));
}

TEST(Fingerprint, TellsWhichEntryIsPrimary) {
  MultiValue phones;
  const auto first = phones.add("1", "");
  const auto second = phones.add("2", "");
  const auto bagWithPrimary = [&](std::uint64_t primary) {
    phones.primary = primary;
    PropertyBag bag;
    bag.set(property_id::kPhone, std::make_shared<const MultiValue>(phones));
    return contentFingerprint(bag, nullptr);
  };
  EXPECT_NE(bagWithPrimary(first), bagWithPrimary(second));
  EXPECT_NE(bagWithPrimary(first), bagWithPrimary(0));
}

}  // namespace
}  // namespace ox
