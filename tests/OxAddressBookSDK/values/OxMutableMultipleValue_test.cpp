#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

std::shared_ptr<OxMutableSingleValue> element(const char* text) {
  auto value = OxMutableSingleValue::init();
  value->setValue(text);
  return value;
}

TEST(OxMutableMultipleValue, KeepsElementsInTheOrderOfAddingAndIgnoresMissingOnes) {
  const auto values = OxMutableMultipleValue::init();
  const auto first = element("a");
  const auto second = element("b");
  values->addValue(first);
  values->addValue(nullptr);
  values->addValue(second);
  EXPECT_EQ(values->type(), 12);
  ASSERT_EQ(values->count(), 2U);
  EXPECT_EQ(values->valueAtIndex(0), first);
  EXPECT_EQ(values->valueAtIndex(1), second);
  EXPECT_EQ(values->valueAtIndex(2), nullptr);
  EXPECT_EQ(values->valueAtIndex(OxNotFound), nullptr);
}

TEST(OxMutableMultipleValue, FindsTheVeryElementBeforeAnEqualOne) {
  const auto values = OxMutableMultipleValue::init();
  const auto twin = element("a");
  values->addValue(element("a"));
  values->addValue(twin);
  EXPECT_EQ(values->indexOfValue(twin), 1U);
  EXPECT_EQ(values->indexOfValue(element("a")), 0U);
  EXPECT_EQ(values->indexOfValue(element("b")), OxNotFound);
  EXPECT_EQ(values->indexOfValue(nullptr), OxNotFound);
}

TEST(OxMutableMultipleValue, HasNoMainValueButOneOfItsElements) {
  const auto values = OxMutableMultipleValue::init();
  EXPECT_EQ(values->mainValue(), nullptr);
  const auto first = element("a");
  const auto second = element("b");
  values->addValue(first);
  values->addValue(second);
  EXPECT_EQ(values->mainValue(), nullptr);
  values->setMainValue(second);
  EXPECT_EQ(values->mainValue(), second);
  values->setMainValue(element("c"));
  EXPECT_EQ(values->mainValue(), second);
  values->setMainValue(element("a"));
  EXPECT_EQ(values->mainValue(), first);
  values->setMainValue(nullptr);
  EXPECT_EQ(values->mainValue(), nullptr);
}

TEST(OxMutableMultipleValue, IsEqualWhenElementsOrderAndMainValueAre) {
  const auto made = [](std::vector<const char*> texts, std::uint64_t main) {
    auto values = OxMutableMultipleValue::init();
    for (const auto* text : texts) values->addValue(element(text));
    values->setMainValue(values->valueAtIndex(main));
    return values;
  };
  EXPECT_TRUE(made({"a", "b"}, 1)->equals(*made({"a", "b"}, 1)));
  EXPECT_TRUE(made({}, OxNotFound)->equals(*made({}, OxNotFound)));
  EXPECT_FALSE(made({"a", "b"}, 1)->equals(*made({"a", "b"}, 0)));
  EXPECT_FALSE(made({"a", "b"}, 1)->equals(*made({"a", "b"}, OxNotFound)));
  EXPECT_FALSE(made({"a", "b"}, OxNotFound)->equals(*made({"b", "a"}, OxNotFound)));
  EXPECT_FALSE(made({"a"}, 0)->equals(*made({"a", "b"}, 0)));
  EXPECT_FALSE(made({"a"}, 0)->equals(*element("a")));
}

TEST(OxMutableMultipleValue, CopiesElementsAndKeepsTheMainOneInItsPlace) {
  const auto values = OxMutableMultipleValue::init();
  values->addValue(element("a"));
  values->addValue(element("b"));
  values->setMainValue(values->valueAtIndex(1));
  const auto copy = std::dynamic_pointer_cast<OxMutableMultipleValue>(values->copy());
  ASSERT_TRUE(copy);
  EXPECT_TRUE(copy->equals(*values));
  EXPECT_EQ(copy->mainValue(), copy->valueAtIndex(1));
  copy->mainValue()->setValue("changed");
  EXPECT_EQ(values->valueAtIndex(1)->value(), Object("b"));
}

TEST(OxMutableMultipleValue, IsToldFromASingleOneByItsType) {
  const OxValuePtr multiple = OxMutableMultipleValue::init();
  const OxValuePtr single = OxMutableSingleValue::init();
  EXPECT_EQ(multipleOf(multiple), multiple);
  EXPECT_EQ(multipleOf(single), nullptr);
  EXPECT_EQ(multipleOf(nullptr), nullptr);
  EXPECT_EQ(singleOf(single), single);
  EXPECT_EQ(singleOf(multiple), nullptr);
  EXPECT_EQ(singleOf(nullptr), nullptr);
}

}  // namespace
}  // namespace ox
