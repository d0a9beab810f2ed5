// A value nested deeper than the stored form allows was saved, and the whole record was unreadable
// from then on; a picture inside a dictionary was accepted, and every later save failed; a date
// that does not exist was stored, and no backup of the book could be written any more.
#include <gtest/gtest.h>

#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "tests/support/store_builder.hpp"

namespace ox {
namespace {

Object nested(int depth) {
  Object object("inner");
  for (int i = 0; i < depth; ++i) object = Array{object};
  return object;
}

PropertyValue oneEntry(Object value) {
  MultiValue values;
  values.add(std::move(value), "label");
  return std::make_shared<const MultiValue>(values);
}

TEST(UnstorableValues, AreRefusedAndTheOldOnesStay) {
  support::StoreBuilder().person("p", {.first = "Ann"});
  ABPerson::addPropertiesAndTypes({{"Nested", kABArrayProperty}});
  const auto book = ABAddressBook::sharedAddressBook();
  const auto person = book->people().at(0);
  EXPECT_TRUE(person->setValue_forProperty(nested(32), "Nested"));
  EXPECT_FALSE(person->setValue_forProperty(nested(40), "Nested"));
  EXPECT_FALSE(person->setValue_forProperty(nested(1000), "Nested"));
  const Object picture(std::make_shared<const Image>());
  EXPECT_FALSE(
      person->setValue_forProperty(oneEntry(Dictionary{{"a", picture}}), kABSocialProfileProperty));
  EXPECT_TRUE(book->save());
  EXPECT_EQ(std::get<Object>(person->valueForProperty("Nested")), nested(32));
  EXPECT_EQ(std::get<Object>(person->valueForProperty(kABFirstNameProperty)), Object("Ann"));
}

TEST(UnstorableValues, AreDatesThatDoNotExistAndDictionariesBeyondMeasure) {
  support::StoreBuilder().person("p");
  ABPerson::addPropertiesAndTypes({{"Nested", kABArrayProperty}, {"Facts", kABDictionaryProperty}});
  const auto person = ABAddressBook::sharedAddressBook()->people().at(0);
  const Date leap{2000, 2, 29, {}, {}};
  const std::vector<Date> none = {
      Date(),
      Date{2001, 2, 30, {}, {}},
      Date{2001, 2, 29, {}, {}},
      Date{10000, 1, 1, {}, {}},
      Date{{}, 5, 17, {}, 60},
  };
  for (const auto& date : none) {
    EXPECT_FALSE(person->setValue_forProperty(Object(date), kABBirthdayProperty)) << date.toText();
    EXPECT_FALSE(person->setValue_forProperty(Object(Array{date}), "Nested")) << date.toText();
    EXPECT_FALSE(person->setValue_forProperty(oneEntry(date), kABOtherDatesProperty));
  }
  EXPECT_TRUE(person->setValue_forProperty(Object(leap), kABBirthdayProperty));
  EXPECT_TRUE(person->setValue_forProperty(oneEntry(leap), kABOtherDatesProperty));
  Dictionary large;
  for (int i = 0; i < 10'000; ++i) large.set(std::to_string(i), Object("x"));
  EXPECT_TRUE(person->setValue_forProperty(Object(large), "Facts"));
  large.set("one more", Object("x"));
  EXPECT_FALSE(person->setValue_forProperty(Object(large), "Facts"));
  Object empty(Array{});
  for (int i = 0; i < 31; ++i) empty = Array{empty};
  EXPECT_TRUE(person->setValue_forProperty(empty, "Nested"));
  EXPECT_FALSE(person->setValue_forProperty(Object(Array{empty}), "Nested"));
}

TEST(UnstorableValues, KeepAWholeRequestFromBeingWritten) {
  const auto contact = CNMutableContact::init();
  PropertyBag values;
  values.set(property_id::kFirst, Object(std::int64_t{1}));
  contact->setProperties(values);
  const auto request = CNSaveRequest::init();
  request->addContact_toContainerWithIdentifier(contact, "_local");
  std::string error;
  EXPECT_FALSE(CNContactStore::init()->executeSaveRequest_error(*request, &error));
  EXPECT_EQ(error, "a value of the wrong type for First");
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 0U);
}

TEST(UnstorableValues, DoNotIncludeANullMultiValueWhichIsMissing) {
  support::StoreBuilder().person("p", {.phones = {{"a", "1"}}});
  const auto person = ABAddressBook::sharedAddressBook()->people().at(0);
  EXPECT_TRUE(person->setValue_forProperty(MultiValuePtr(), kABPhoneProperty));
  EXPECT_TRUE(isMissing(person->valueForProperty(kABPhoneProperty)));
}

}  // namespace
}  // namespace ox
