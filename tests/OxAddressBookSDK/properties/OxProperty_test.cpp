#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"

#include <gtest/gtest.h>
#include <set>
#include <string>
#include <vector>

namespace ox {
namespace {

TEST(OxProperty, ListsTheStandardDescriptorsInTheirOrderWithTheirTypes) {
  const std::vector<std::string> expected = {
      "OxProPertyName 1",       "OxProPertyThumbnail 2",          "OxProPertyTags 3",
      "OxProPertyPhone 12/6",   "OxProPertyEmail 12/7",           "OxProPertyTitle 0",
      "OxProPertySuffix 0",     "OxProPertyMaidenName 0",         "OxProPertyNickname 0",
      "OxProPertyCompany 0",    "OxProPertyDepartment 0",         "OxProPertyJobTitle 0",
      "OxProPertyBirthday 4",   "OxProPertyFirstNamePhonetic 0",  "OxProPertyLastNamePhonetic 0",
      "OxProPertyURLs 12/8",    "OxProPertyInstantMessage 12/13", "OxProPertySocialProfile 12/11",
      "OxProPertyAddress 12/9", "OxProPertyRelatedNames 12/0",    "OxProPertyNote 0",
      "OxProPertyOther 12/0",   "OxProPertyDate 12/10",
  };
  std::vector<std::string> actual;
  std::set<std::string> displayNames;
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    auto line = property->name() + " " + std::to_string(property->valueType());
    if (property->valueType() == value_type::kMultiple) {
      line += "/" + std::to_string(property->subValueType());
    }
    actual.push_back(line);
    displayNames.insert(property->displayName());
  }
  EXPECT_EQ(actual, expected);
  EXPECT_EQ(displayNames.size(), expected.size());
}

TEST(OxProperty, GivesTheSameDescriptorForAStandardNameEachTime) {
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    EXPECT_EQ(OxProperty::propertyWithName(property->name()), property) << property->name();
  }
  EXPECT_EQ(OxProperty::propertyWithName("OxProPertyPhone"),
            OxProperty::propertyWithName(OxProPertyPhone));
}

TEST(OxProperty, TakesAnUnknownNameForAStringPropertyThatIsNotListed) {
  const auto property = OxProperty::propertyWithName("X-Boat");
  ASSERT_TRUE(property);
  EXPECT_EQ(property->name(), "X-Boat");
  EXPECT_EQ(property->displayName(), "X-Boat");
  EXPECT_EQ(property->valueType(), value_type::kString);
  EXPECT_NE(OxProperty::propertyWithName("X-Boat"), property);
  EXPECT_EQ(OxProperty::StandardPropertyArray().size(), 23U);
  EXPECT_NE(OxProperty::propertyWithName("oxpropertyphone"),
            OxProperty::propertyWithName(OxProPertyPhone));
}

TEST(OxProperty, GivesNothingForAMissingOrEmptyName) {
  EXPECT_EQ(OxProperty::propertyWithName(nullptr), nullptr);
  EXPECT_EQ(OxProperty::propertyWithName(Text()), nullptr);
  EXPECT_EQ(OxProperty::propertyWithName(""), nullptr);
}

}  // namespace
}  // namespace ox
