#include "ox/OxAddressBookSDK/general/OxGeneralPerson.hpp"

#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "tests/OxAddressBookSDK/general/live_person.hpp"

namespace ox {
namespace {

using Tags = std::vector<std::string>;

std::shared_ptr<OxMutableSingleValue> single(Object object, std::int32_t type = 0) {
  auto value = OxMutableSingleValue::init();
  value->setValue(std::move(object));
  value->setType(type);
  return value;
}

OxValuePtr nameValue(Text first, Text last) {
  return single(OxObjectPersonName::initWithFirst_middle_last(std::move(first), std::nullopt,
                                                              std::move(last)),
                value_type::kPersonName);
}

std::vector<std::string> namesOf(const std::vector<OxPropertyPtr>& properties) {
  std::vector<std::string> result;
  result.reserve(properties.size());
  for (const auto& property : properties) result.push_back(property->name());
  return result;
}

TEST(OxGeneralPerson, HoldsNothingAtFirst) {
  const auto person = OxGeneralPerson::make("p");
  EXPECT_EQ(person->ID(), Text("p"));
  EXPECT_EQ(person->addressBookID(), std::nullopt);
  EXPECT_EQ(person->displayName(), Text(""));
  EXPECT_TRUE(person->notNullValueProperty().empty());
  EXPECT_EQ(person->valueByPropertyName(OxProPertyName), nullptr);
  EXPECT_EQ(person->valueByProperty(nullptr), nullptr);
  EXPECT_EQ(person->mainPhone(), nullptr);
  EXPECT_EQ(person->thumbnail(), nullptr);
  EXPECT_EQ(person->tagArray(), Tags());
}

TEST(OxGeneralPerson, HandsOutAndTakesInCopies) {
  const auto person = OxGeneralPerson::make("p");
  const auto note = single("one");
  person->setValue_byPropertyName(note, OxProPertyNote);
  note->setValue("two");
  const auto read =
      std::dynamic_pointer_cast<OxMutableSingleValue>(person->valueByPropertyName(OxProPertyNote));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->value(), Object("one"));
  read->setValue("three");
  EXPECT_TRUE(person->valueByPropertyName(OxProPertyNote)->equals(*single("one")));
  person->setValue_byPropertyName(nullptr, OxProPertyNote);
  EXPECT_EQ(person->valueByPropertyName(OxProPertyNote), nullptr);
  person->setValue_byProperty(note, nullptr);
  EXPECT_TRUE(person->notNullValueProperty().empty());
}

TEST(OxGeneralPerson, ListsItsValuesInTheOrderOfSettingAndKeepsTheVeryOneItTakes) {
  const auto person = OxGeneralPerson::make("p");
  const auto note = single("one");
  person->takeValue(note, OxProperty::propertyWithName(OxProPertyNote));
  person->setValue_byPropertyName(single("ACME"), OxProPertyCompany);
  person->takeValue(note, nullptr);
  ASSERT_EQ(person->values().size(), 2U);
  EXPECT_EQ(person->values()[0].second, note);
  EXPECT_EQ(person->values()[1].first->name(), OxProPertyCompany);
  person->takeValue(nullptr, OxProperty::propertyWithName(OxProPertyNote));
  EXPECT_EQ(person->values().size(), 1U);
}

TEST(OxGeneralPerson, ShowsTheNameElseTheCompany) {
  const auto person = OxGeneralPerson::make("p");
  person->setValue_byPropertyName(single("ACME"), OxProPertyCompany);
  EXPECT_EQ(person->displayName(), Text("ACME"));
  person->setValue_byPropertyName(nameValue(std::nullopt, std::nullopt), OxProPertyName);
  EXPECT_EQ(person->displayName(), Text("ACME"));
  person->setValue_byPropertyName(nameValue("", std::nullopt), OxProPertyName);
  EXPECT_EQ(person->displayName(), Text(""));
  person->setValue_byPropertyName(nameValue("Ann", "Lee"), OxProPertyName);
  EXPECT_EQ(person->displayName(), Text("Ann Lee"));
}

TEST(OxGeneralPerson, ListsWhatItHoldsInTheStandardOrderWithoutEmptyMultiples) {
  const auto person = OxGeneralPerson::make("p");
  person->setValue_byPropertyName(single(""), OxProPertyNote);
  person->setValue_byPropertyName(OxMutableMultipleValue::init(), OxProPertyPhone);
  person->setValue_byPropertyName(single("ACME"), OxProPertyCompany);
  person->setValue_byPropertyName(nameValue(std::nullopt, std::nullopt), OxProPertyName);
  EXPECT_EQ(namesOf(person->notNullValueProperty()),
            (std::vector<std::string>{"OxProPertyName", "OxProPertyCompany", "OxProPertyNote"}));
}

TEST(OxGeneralPerson, AnswersTheMainPhoneAndEmailOnlyWhenOneIsMarked) {
  const auto person = OxGeneralPerson::make("p");
  const auto phones = OxMutableMultipleValue::init();
  phones->addValue(single(OxObjectPhone::initWithPhoneNumber("1"), value_type::kPhone));
  phones->addValue(single(OxObjectPhone::initWithPhoneNumber("2"), value_type::kPhone));
  person->setValue_byPropertyName(phones, OxProPertyPhone);
  EXPECT_EQ(person->mainPhone(), nullptr);
  phones->setMainValue(phones->valueAtIndex(1));
  person->setValue_byPropertyName(phones, OxProPertyPhone);
  ASSERT_TRUE(person->mainPhone());
  EXPECT_EQ(person->mainPhone()->phoneNumber(), Text("2"));
  person->setValue_byPropertyName(phones, OxProPertyEmail);  // phones are no e-mails
  EXPECT_EQ(person->mainEmail(), nullptr);
}

TEST(OxGeneralPerson, KeepsTagsAndPictureAsOrdinaryValues) {
  const auto person = OxGeneralPerson::make("p");
  person->addTag("b");
  person->addTag("a");
  person->addTag("b");
  person->addTag(nullptr);
  EXPECT_EQ(person->tagArray(), (Tags{"b", "a"}));
  EXPECT_EQ(person->valueByPropertyName(OxProPertyTags)->type(), value_type::kTags);
  person->removeTag("b");
  EXPECT_EQ(person->tagArray(), Tags{"a"});
  person->setTags(std::nullopt);
  EXPECT_EQ(person->valueByPropertyName(OxProPertyTags), nullptr);

  const auto image = std::make_shared<const Image>(Image{1, 1, {1, 2, 3, 4}});
  person->setThumbnail(image);
  ASSERT_TRUE(person->thumbnail());
  EXPECT_EQ(*person->thumbnail(), *image);
  EXPECT_EQ(namesOf(person->notNullValueProperty()), Tags{"OxProPertyThumbnail"});
  person->setThumbnail(nullptr);
  EXPECT_TRUE(person->notNullValueProperty().empty());
}

TEST(OxGeneralPerson, LeavesTheValuesOfThePersonThatItCopiesToThatPerson) {
  const auto image = std::make_shared<const Image>(Image{1, 1, {1, 2, 3, 4}});
  const auto picture = single(Object(image), value_type::kImage);
  const auto phone = single(OxObjectPhone::initWithPhoneNumber("1"), value_type::kPhone);
  const auto phones = OxMutableMultipleValue::init();
  phones->addValue(phone);
  phones->addValue(single(Object(Array{Object(image)})));
  LivePerson host("h");
  host.setValue_byPropertyName(picture, OxProPertyThumbnail);
  host.setValue_byPropertyName(phones, OxProPertyPhone);

  const auto copy = OxGeneralPerson::copyOf(host);
  EXPECT_EQ(picture->value().image(), image) << "packed in the host's own value";
  EXPECT_EQ(phones->valueAtIndex(1)->value(), Object(Array{Object(image)}));

  picture->setValue(Object("gone"));
  phone->setValue(OxObjectPhone::initWithPhoneNumber("2"));
  phones->setMainValue(phone);
  ASSERT_TRUE(copy->thumbnail());
  EXPECT_EQ(*copy->thumbnail(), *image);
  EXPECT_EQ(copy->mainPhone(), nullptr);
  const auto copied =
      std::dynamic_pointer_cast<OxMutableMultipleValue>(copy->valueByPropertyName(OxProPertyPhone));
  ASSERT_TRUE(copied);
  EXPECT_EQ(copied->valueAtIndex(0)->value().host<OxObjectPhone>()->phoneNumber(), Text("1"));
}

}  // namespace
}  // namespace ox
