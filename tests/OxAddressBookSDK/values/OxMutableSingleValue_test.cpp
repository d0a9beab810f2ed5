#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"

#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"

namespace ox {
namespace {

std::shared_ptr<OxLabel> labelNamed(Text name) {
  auto label = OxLabel::init();
  label->setName(std::move(name));
  return label;
}

TEST(OxMutableSingleValue, StartsWithoutValueAndLabelAsAString) {
  const auto value = OxMutableSingleValue::init();
  EXPECT_TRUE(value->value().isMissing());
  EXPECT_EQ(value->label(), nullptr);
  EXPECT_EQ(value->type(), value_type::kString);
}

TEST(OxMutableSingleValue, IsEqualWhenValueTypeAndLabelAre) {
  const auto phone = [](const char* number, const char* label) {
    auto value = OxMutableSingleValue::init();
    value->setValue(OxObjectPhone::initWithPhoneNumber(number));
    value->setType(value_type::kPhone);
    if (label != nullptr) value->setLabel(labelNamed(label));
    return value;
  };
  EXPECT_TRUE(phone("1", "a")->equals(*phone("1", "a")));
  EXPECT_TRUE(phone("1", nullptr)->equals(*phone("1", nullptr)));
  EXPECT_FALSE(phone("1", "a")->equals(*phone("2", "a")));
  EXPECT_FALSE(phone("1", "a")->equals(*phone("1", "b")));
  EXPECT_FALSE(phone("1", "a")->equals(*phone("1", nullptr)));
  auto other = phone("1", "a");
  other->setType(value_type::kEmail);
  EXPECT_FALSE(phone("1", "a")->equals(*other));
  EXPECT_FALSE(phone("1", "a")->equals(*OxObjectPhone::initWithPhoneNumber("1")));
}

TEST(OxMutableSingleValue, CopiesItsLabelAndSharesWhatItHolds) {
  auto value = OxMutableSingleValue::init();
  const auto phone = OxObjectPhone::initWithPhoneNumber("1");
  value->setValue(phone);
  value->setLabel(labelNamed("home"));
  const auto copy = value->copySingle();
  EXPECT_TRUE(copy->equals(*value));
  copy->label()->setName("work");
  EXPECT_EQ(value->label()->name(), Text("home"));
  EXPECT_EQ(copy->value().host<OxObjectPhone>(), phone);
}

}  // namespace
}  // namespace ox
