#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"

#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"
#include "tests/OxAddressBookSDK/general/loose_group.hpp"

namespace ox {
namespace {

std::shared_ptr<OxGeneralPerson> personWithNote(const char* identifier, const char* note) {
  auto person = OxGeneralPerson::make(identifier);
  auto value = OxMutableSingleValue::init();
  value->setValue(note);
  person->setValue_byPropertyName(value, OxProPertyNote);
  return person;
}

std::string noteOf(const IOxPerson& person) {
  const auto value =
      std::dynamic_pointer_cast<OxMutableSingleValue>(person.valueByPropertyName(OxProPertyNote));
  return value ? value->value().toText().value_or("") : "";
}

TEST(OxAddressBookGeneral, StartsEmpty) {
  const auto book = OxAddressBookGeneral::init();
  EXPECT_EQ(book->groupsDic().count(), 0U);
  EXPECT_EQ(book->personsDic().count(), 0U);
  EXPECT_EQ(book->groupsDic().objectForKey("g"), nullptr);
}

TEST(OxAddressBookGeneral, EnumeratesInTheOrderOfAddingAndFindsByKey) {
  const auto book = OxAddressBookGeneral::init();
  for (const auto* id : {"z", "a", "m", "b"}) book->addPerson(personWithNote(id, id));
  std::string order;
  for (const auto& [key, person] : book->personsDic()) order += key + noteOf(*person) + " ";
  EXPECT_EQ(order, "zz aa mm bb ");
  EXPECT_EQ(book->personsDic().objectForKey("m")->ID(), Text("m"));
  EXPECT_EQ(book->personsDic().objectForKey("q"), nullptr);
  EXPECT_EQ(book->personsDic().objectForKey(nullptr), nullptr);
}

TEST(OxAddressBookGeneral, PutsALaterRecordOfTheSameIdInThePlaceOfTheEarlier) {
  const auto book = OxAddressBookGeneral::init();
  book->addPerson(personWithNote("a", "old"));
  book->addPerson(personWithNote("b", "b"));
  book->addPerson(personWithNote("a", "new"));
  std::string order;
  for (const auto& [key, person] : book->personsDic()) order += key + noteOf(*person) + " ";
  EXPECT_EQ(order, "anew bb ");
}

TEST(OxAddressBookGeneral, CopiesThePersonAsItIsNow) {
  const auto book = OxAddressBookGeneral::init();
  const auto person = personWithNote("p", "before");
  person->addTag("t");
  book->addPerson(person);
  person->setValue_byPropertyName(nullptr, OxProPertyNote);
  person->setTags(std::nullopt);
  const auto copy = book->personsDic().objectForKey("p");
  ASSERT_TRUE(copy);
  EXPECT_EQ(noteOf(*copy), "before");
  EXPECT_EQ(copy->tagArray(), std::vector<std::string>{"t"});
}

TEST(OxAddressBookGeneral, CopiesAGroupsNameAndTheIdsOfWhatLiesInIt) {
  const auto book = OxAddressBookGeneral::init();
  const auto group = std::make_shared<LooseGroup>("g", "Friends");
  group->below = {std::make_shared<LooseGroup>("g2", ""), nullptr,
                  std::make_shared<LooseGroup>("g1", "")};
  group->members = {OxGeneralPerson::make("p2"), OxGeneralPerson::make(std::nullopt),
                    OxGeneralPerson::make("p1")};
  book->addGroup(group);
  const auto copy = book->groupsDic().objectForKey("g");
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->title(), Text("Friends"));
  EXPECT_EQ(copy->subArray(), (OxGeneralGroup::Keys{"g2", "g1"}));
  EXPECT_EQ(copy->persons(), (OxGeneralGroup::Keys{"p2", "p1"}));
  EXPECT_EQ(copy->extend(), nullptr);
  copy->setExtend(group);
  EXPECT_EQ(copy->extend(), group);
}

TEST(OxAddressBookGeneral, IgnoresWhatIsMissingOrHasNoId) {
  const auto book = OxAddressBookGeneral::init();
  book->addGroup(nullptr);
  book->addPerson(nullptr);
  book->addGroup(std::make_shared<LooseGroup>(std::nullopt, "nameless"));
  book->addPerson(OxGeneralPerson::make(std::nullopt));
  EXPECT_EQ(book->groupsDic().count(), 0U);
  EXPECT_EQ(book->personsDic().count(), 0U);
}

}  // namespace
}  // namespace ox
