#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABMultiValue.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

using Multiple = std::shared_ptr<OxMutableMultipleValue>;

Multiple multiple(const std::vector<std::shared_ptr<OxMutableSingleValue>>& elements) {
  auto container = OxMutableMultipleValue::init();
  for (const auto& element : elements) container->addValue(element);
  return container;
}

Multiple readMultiple(const _ABPerson& person, std::string_view name) {
  return std::dynamic_pointer_cast<OxMutableMultipleValue>(person.valueByPropertyName(name));
}

std::shared_ptr<OxMutableSingleValue> phone(const char* number, const char* label = nullptr) {
  auto element = single(OxObjectPhone::initWithPhoneNumber(number), value_type::kPhone);
  element->setLabel(OxLabel::init());
  if (label != nullptr) element->label()->setName(label);
  return element;
}

// What is to be written, as "label=text" entries; the primary one is marked.
std::string written(const PropertyValue& value) {
  const auto* const content = std::get_if<MultiValuePtr>(&value);
  if (content == nullptr) return isMissing(value) ? "missing" : "one object";
  std::string text;
  for (const auto& entry : (*content)->entries) {
    if (!text.empty()) text += ' ';
    text += entry.label.value_or("-") + '=' + entry.value.toText().value_or("(object)");
    if (entry.identifier == (*content)->primary) text += '*';
  }
  return text;
}

TEST(ReadingAMultiValue, KeepsOrderLabelsAndTheMainElement) {
  const auto ann = newPersonWith(
      {.phones = {
           {Text(kABHomeLabel), "1\n2"}, {Text(kABPhoneMobileLabel), "3", true}, {"Boat", "4"}}});
  const auto phones = readMultiple(*ann, OxProPertyPhone);
  std::string read;
  for (std::uint64_t i = 0; i < phones->count(); ++i) {
    const auto element = phones->valueAtIndex(i);
    EXPECT_EQ(element->type(), value_type::kPhone);
    read += *element->label()->name() + '/' + *element->label()->displayName() + '/' +
            *element->value().host<OxObjectPhone>()->phoneNumber() + ' ';
  }
  EXPECT_EQ(read, "_$!<Home>!$_/Home/12 _$!<Mobile>!$_/Mobile/3 Boat/Boat/4 ");
  EXPECT_EQ(phones->mainValue(), phones->valueAtIndex(1));
  EXPECT_EQ(ann->mainPhone()->phoneNumber(), Text("3"));
  EXPECT_EQ(ann->mainEmail(), nullptr);
}

TEST(ReadingAMultiValue, WithoutPrimaryEntryHasNoMainElement) {
  const auto ann =
      newPersonWith({.phones = {{std::nullopt, "1"}}, .emails = {{std::nullopt, "a@b\n.c", true}}});
  const auto phones = readMultiple(*ann, OxProPertyPhone);
  EXPECT_EQ(phones->mainValue(), nullptr);
  EXPECT_EQ(phones->valueAtIndex(0)->label()->name(), Text());
  EXPECT_EQ(phones->valueAtIndex(0)->label()->displayName(), Text());
  EXPECT_EQ(ann->mainValueForProPertyName(OxProPertyPhone), nullptr);
  EXPECT_EQ(ann->mainPhone(), nullptr);
  EXPECT_EQ(ann->mainEmail()->email(), Text("a@b.c"));
}

TEST(ReadingAMultiValue, TakesThePlaceOfThePrimaryEntryAsItIsInTheStoredList) {
  const auto reader = newPersonWith({});
  MultiValue stored;
  stored.add(Object(std::make_shared<Dictionary>()), "no phone");  // gives no element
  stored.add(Object("1"), "x");
  stored.primary = stored.add(Object("2"), "y");
  const auto phones = property(OxProPertyPhone);
  const auto read =
      reader->multipleValueByMacValue_property(std::make_shared<const MultiValue>(stored), phones);
  EXPECT_EQ(read->count(), 2U);
  EXPECT_EQ(read->mainValue(), nullptr);
  stored.primary = stored.entries[1].identifier;
  const auto shifted =
      reader->multipleValueByMacValue_property(std::make_shared<const MultiValue>(stored), phones);
  EXPECT_EQ(shifted->mainValue(), shifted->valueAtIndex(1));
}

TEST(ReadingAMultiValue, OfNothingIsAnEmptyContainer) {
  const auto ann = newPersonWith({});
  EXPECT_EQ(ann->multipleValueByMacValue_property(nullptr, property(OxProPertyPhone))->count(), 0U);
  EXPECT_EQ(ann->multipleValueByMacValue_property(nullptr, nullptr)->count(), 0U);
}

TEST(MainValue, OfASingleValuedPropertyIsMissing) {
  const auto ann = newPersonWith({.company = "ACME"});
  EXPECT_EQ(ann->mainValueForProPertyName(OxProPertyCompany), nullptr);
  EXPECT_TRUE(ann->valueOfMainValueForProPertyName(OxProPertyCompany).isMissing());
  EXPECT_EQ(ann->mainValueForProPertyName(std::nullopt), nullptr);
}

TEST(ReadingASingleValue, CarriesThePropertysDisplayNameOnBothLabelFields) {
  const auto ann = newPersonWith({.company = "ACME"});
  const auto value =
      std::dynamic_pointer_cast<OxMutableSingleValue>(ann->valueByPropertyName(OxProPertyCompany));
  EXPECT_EQ(value->value(), Object("ACME"));
  EXPECT_EQ(value->type(), value_type::kString);
  EXPECT_EQ(value->label()->name(), Text(property(OxProPertyCompany)->displayName()));
  EXPECT_EQ(value->label()->displayName(), value->label()->name());
  EXPECT_EQ(ann->singleValueByMacValue_property(Object(), property(OxProPertyNote)), nullptr);
  EXPECT_EQ(ann->singleValueByMacValue_label_type(Object(), OxLabel::init(), 0), nullptr);
  EXPECT_EQ(ann->singleValueByMacValue_label_type("x", nullptr, 8)->type(), 8);
}

TEST(WritingASingleValue, DropsAnEmptyStringOfAStringPropertyOnly) {
  const auto ann = newPersonWith({});
  const auto convert = [&ann](const Object& value, std::string_view name) {
    return std::get<Object>(ann->macValueByOxValue_property(single(value, 0), property(name)));
  };
  EXPECT_EQ(convert("", OxProPertyNote), Object());
  EXPECT_EQ(convert("x", OxProPertyNote), Object("x"));
  EXPECT_EQ(convert("", OxProPertyBirthday), Object(""));
  // No element converter runs.
  const Object number(OxObjectPhone::initWithPhoneNumber("1"));
  EXPECT_EQ(convert(number, OxProPertyNote), number);
  EXPECT_TRUE(isMissing(ann->macValueByOxValue_property(nullptr, property(OxProPertyNote))));
}

TEST(WritingAMultiValue, ConvertsEachElementByItsOwnType) {
  const auto ann = newPersonWith({});
  const auto value = multiple({
      phone("1", "_$!<Home>!$_"),
      single(OxObjectEmail::initWithEmail("a@b"), value_type::kEmail),
      single("", value_type::kString),
      single("text", value_type::kString),
      single("", value_type::kURL),
      single("ten", value_type::kDateElement),
      single("nested", value_type::kMultiple),
      single("ninety", 90),
  });
  EXPECT_EQ(written(ann->macValueByOxValue_property(value, property(OxProPertyPhone))),
            "_$!<Home>!$_=1 -=a@b -=text -= -=ten -=ninety");
}

TEST(WritingAMultiValue, OfNothingButEmptyStringsOrMultiplesIsMissing) {
  const auto ann = newPersonWith({});
  const auto phones = property(OxProPertyPhone);
  const auto empty = multiple({single("", 0), single("", 0)});
  EXPECT_EQ(written(ann->macValueByOxValue_property(empty, phones)), "missing");
  const auto nested = multiple({single("x", value_type::kMultiple)});
  EXPECT_EQ(written(ann->macValueByOxValue_property(nested, phones)), "missing");
  EXPECT_EQ(written(ann->macValueByOxValue_property(multiple({}), phones)), "missing");
}

TEST(WritingAMultiValue, AnAccountWithoutUserNameIsAnEmptyDictionary) {
  const auto ann = newPersonWith({});
  const auto account = OxObjectInstantMessage::initWithUserName_server(std::nullopt, nullptr);
  const auto stored = std::get<MultiValuePtr>(
      ann->macValueByOxValue_property(multiple({single(account, value_type::kInstantMessage)}),
                                      property(OxProPertyInstantMessage)));
  ASSERT_EQ(stored->entries.size(), 1U);
  EXPECT_EQ(stored->entries[0].value, Object(Dictionary()));
}

TEST(WritingAMultiValue, TakesTheMainIndexAsItIsInTheModelsList) {
  const auto ann = newPersonWith({});
  const auto phones = property(OxProPertyPhone);
  const auto three = multiple({single("", 0), phone("1"), phone("2")});
  three->setMainValue(three->valueAtIndex(2));
  EXPECT_EQ(written(ann->macValueByOxValue_property(three, phones)), "-=1 -=2");
  three->setMainValue(three->valueAtIndex(1));
  EXPECT_EQ(written(ann->macValueByOxValue_property(three, phones)), "-=1 -=2*");
  three->setMainValue(nullptr);
  EXPECT_EQ(written(ann->macValueByOxValue_property(three, phones)), "-=1 -=2");
}

TEST(WritingAMultiValue, ReplacesWhatThePersonHolds) {
  const auto ann = newPersonWith({.phones = {{"a", "1", true}, {"b", "2"}}});
  ann->setValue_byPropertyName(multiple({phone("3", "c")}), OxProPertyPhone);
  EXPECT_EQ(written(ann->valueForProperty(kABPhoneProperty)), "c=3");
  ann->setValue_byPropertyName(multiple({single("", 0)}), OxProPertyPhone);
  EXPECT_EQ(ann->valueByPropertyName(OxProPertyPhone), nullptr);
}

TEST(WritingAMultiValue, OfAnElementThatDoesNotFitItsTypeIsRefusedAndKeepsTheOldValue) {
  const auto ann = newPersonWith({.phones = {{"a", "1", true}}});
  const failures::Watch watch;
  std::uint64_t refusals = 0;
  for (const std::int32_t type : {6, 7, 9, 13}) {
    ann->setValue_byPropertyName(multiple({phone("2"), single("text", type)}), OxProPertyPhone);
    EXPECT_EQ(written(ann->valueForProperty(kABPhoneProperty)), "a=1*") << type;
    EXPECT_EQ(watch.counts(), (failures::Counts{++refusals, 0})) << type;
  }
  EXPECT_EQ(watch.last(),
            (Failure{FailureKind::Refused,
                     "an element that does not fit its type for OxProPertyPhone", "p"}));
  // One that holds nothing is passed over.
  ann->setValue_byPropertyName(multiple({phone("2"), single({}, value_type::kPhone)}),
                               OxProPertyPhone);
  EXPECT_EQ(written(ann->valueForProperty(kABPhoneProperty)), "-=2");
  EXPECT_EQ(watch.counts().refusals, refusals);
}

TEST(WritingASingleValue, OfTypeMultipleIsRefusedAndKeepsTheOldValue) {
  const auto ann = newPersonWith({.note = "note", .phones = {{"a", "1"}}});
  const failures::Watch watch;
  ann->setValue_byPropertyName(single("2", value_type::kMultiple), OxProPertyPhone);
  ann->setValue_byPropertyName(single("other", value_type::kMultiple), OxProPertyNote);
  EXPECT_EQ(written(ann->valueForProperty(kABPhoneProperty)), "a=1");
  EXPECT_EQ(std::get<Object>(ann->valueForProperty(kABNoteProperty)), Object("note"));
  EXPECT_EQ(watch.counts(), (failures::Counts{2, 0}));
  EXPECT_EQ(watch.lastReason(), "a single value of type multiple for OxProPertyNote");
}

TEST(WritingAMultiValue, WhatWasReadComesBackTheSame) {
  const Object address(Dictionary{{std::string(kABAddressCityKey), "Ulm"},
                                  {std::string(kABAddressCountryCodeKey), "DE"}});
  const Object account(Dictionary{{std::string(kABInstantMessageUsernameKey), "ann"},
                                  {std::string(kABInstantMessageServiceKey), "QQ"}});
  const Object profile(Dictionary{{std::string(kABSocialProfileServiceKey), "x"}});
  OxMacAddressBook::init();
  const auto ann =
      newPersonWith({.phones = {{"a", "1"}, {"b", "2", true}},
                     .emails = {{"a", "a@b", true}},
                     .more = {{property_id::kAddress, support::multiValue({{"h", address, true}})},
                              {property_id::kInstantMessage, support::multiValue({{"h", account}})},
                              {property_id::kSocialProfile, support::multiValue({{"h", profile}})},
                              {property_id::kURLs, support::multiValue({{"u", "http://x"}})},
                              {property_id::kOtherDates,
                               support::multiValue({{"d", Date{1990, 5, 17, {}, {}}, true}})}}});
  for (const auto name :
       {OxProPertyPhone, OxProPertyEmail, OxProPertyAddress, OxProPertyInstantMessage,
        OxProPertySocialProfile, OxProPertyURLs, OxProPertyDate}) {
    const auto storeName = ann->macPropertyNameByName(name);
    const auto before = std::get<MultiValuePtr>(ann->valueForProperty(storeName));
    ann->setValue_byPropertyName(ann->valueByPropertyName(name), name);
    const auto after = std::get<MultiValuePtr>(ann->valueForProperty(storeName));
    ASSERT_EQ(after->entries.size(), before->entries.size()) << name;
    for (std::size_t i = 0; i < after->entries.size(); ++i) {
      EXPECT_EQ(after->entries[i].value, before->entries[i].value) << name;
      EXPECT_EQ(after->entries[i].label, before->entries[i].label) << name;
    }
    EXPECT_EQ(ABMultiValue(after).indexForIdentifier(ABMultiValue(after).primaryIdentifier()),
              ABMultiValue(before).indexForIdentifier(ABMultiValue(before).primaryIdentifier()))
        << name;
  }
}

}  // namespace
}  // namespace ox::test
