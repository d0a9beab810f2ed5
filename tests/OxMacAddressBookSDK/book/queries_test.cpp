#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

std::shared_ptr<OxMacAddressBook> bookOf(std::string_view identifier) {
  for (const auto& container :
       CNContactStore::init()->containersMatchingPredicate_error({}, nullptr)) {
    if (container->identifier() == identifier) {
      return OxMacAddressBook::initWithContainer(container);
    }
  }
  return nullptr;
}

TEST(AllPersons, AreTheContactsOfTheContainerStampedAndCached) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real())
      .person("l", {})
      .container("A:ABAccount", "iCloud", 3)
      .person("1", {})
      .person("lost", {})
      .person("2", {})
      .group("g", "G");
  source.hideFromRecordView("lost");
  const auto book = bookOf("A:ABAccount");
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "1 2");
  EXPECT_EQ(book->allPersonsCount(), 2U);
  EXPECT_EQ(_ABPerson::dictionarySave().count(), 2U);
  EXPECT_EQ(book->allPersons(), book->allPersonArray());
  // A filled cache is served as it is.
  StoreBuilder(source.real()).in("A:ABAccount").person("3", {});
  source.resetCounts();
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "1 2");
  EXPECT_EQ(source.counts().recordsIn, 0U);
  book->allPersonArray()->clear();
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "1 2 3");
}

const support::SecondProcess addsPersons("addsPersons", [](const auto& identifiers) {
  StoreBuilder builder;
  builder.in("A:ABAccount");
  for (const auto& identifier : identifiers) builder.person(identifier);
  return 0;
});

TEST(AllPersons, DoNotShowWhatAnotherProgramAddsOnceTheyAreCached) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3);
  const auto book = bookOf("A:ABAccount");
  ASSERT_EQ(book->allPersonsCount(), 0U);
  ASSERT_EQ(addsPersons.run({"1", "2"}).exitCode, 0);
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "1 2") << "an empty cache is no cache";
  ASSERT_EQ(addsPersons.run({"3"}).exitCode, 0);
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "1 2");
  EXPECT_EQ(book->allPersonsCount(), 2U);
  EXPECT_EQ(idsOf(bookOf("A:ABAccount")->allPersons()->snapshot()), "1 2 3");
}

TEST(AllPersons, OfAnEmptyBookAskTheStoreEveryTime) {
  auto& source = SwitchedSource::install();
  const auto book = bookOf("_local:ABAccount");
  source.resetCounts();
  EXPECT_EQ(book->allPersonsCount(), 0U);
  EXPECT_EQ(book->allPersonsCount(), 0U);
  EXPECT_EQ(source.counts().recordsIn, 2U);
}

TEST(AllPersons, AreAskedForAgainOnceAccessToTheContainersIsAllowed) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).person("l", {});
  const auto book = bookOf("_local:ABAccount");
  source.denyContainerAccess();
  ASSERT_TRUE(book->allPersons());
  EXPECT_EQ(book->allPersonsCount(), 0U);
  source.denyContainerAccess(false);
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "l");
}

TEST(AllPersons, OfABookWithoutCacheAreNone) {
  StoreBuilder().person("l", {});
  const auto book = OxMacAddressBook::initWithID("_local");
  EXPECT_EQ(book->allPersons(), nullptr);
  EXPECT_EQ(book->allPersons2(), nullptr);
  EXPECT_EQ(book->allPersonsCount(), 0U);
}

TEST(AllPersons2, AppendsThePersonsStampedWithTheBooksIdEachTime) {
  StoreBuilder().person("l", {}).container("A", "iCloud", 3).person("1", {}).person("2", {});
  const auto book = bookOf("A");
  person("l")->setAddressID("A");
  person("2")->setAddressID("elsewhere");
  EXPECT_EQ(idsOf(book->allPersons2()->snapshot()), "l 1");
  EXPECT_EQ(idsOf(book->allPersons2()->snapshot()), "l 1 l 1");
  EXPECT_EQ(person("2")->addressBookID(), Text("elsewhere"));
}

TEST(Groups, AreFlatOrTopLevelInTheStoresOrder) {
  StoreBuilder()
      .container("A", "iCloud", 3)
      .group("1", "one")
      .group("2", "two")
      .group("3", "three")
      .subgroup("3", "1")
      .in("_local")
      .group("4", "four");
  const auto book = bookOf("A");
  EXPECT_EQ(idsOf(book->allGroups()), "1 2 3");
  EXPECT_EQ(idsOf(book->rootGroups()), "2 3");
  EXPECT_EQ(book->rootGroupsCount(), 2U);
  EXPECT_EQ(idsOf(bookOf("_local:ABAccount")->allGroups()), "4");
}

TEST(Groups, AreNoneWhereTheServiceAllowsNone) {
  StoreBuilder()
      .container("A", "Google", 3)
      .group("1", "one")
      .container("B", "facebook", 3)
      .group("2", "two")
      .container("C", "QQ", 3)
      .group("3", "three");
  for (const auto* identifier : {"A", "B"}) {
    EXPECT_EQ(idsOf(bookOf(identifier)->allGroups()), "");
    EXPECT_EQ(idsOf(bookOf(identifier)->rootGroups()), "");
    EXPECT_EQ(bookOf(identifier)->rootGroupsCount(), 0U);
  }
  EXPECT_EQ(idsOf(bookOf("C")->allGroups()), "3");
  // Only lists are empty: by id the group is found.
  EXPECT_EQ(bookOf("A")->groupByID("1"), group("1"));
}

TEST(GroupByID, FindsGroupsOfThisBookOnly) {
  StoreBuilder().person("p", {}).group("g", "G").container("A", "iCloud", 3).group("a", "A");
  const auto book = bookOf("_local:ABAccount");
  EXPECT_EQ(book->groupByID("g"), group("g"));
  for (const Text& id : {Text("p"), Text("a"), Text("unknown"), Text("")}) {
    EXPECT_EQ(book->groupByID(id), nullptr);
  }
  EXPECT_EQ(book->groupByID(std::nullopt), nullptr);
}

TEST(PersonsForIDs, AreRecordsOfAnyKindAndBookInTheGivenOrder) {
  StoreBuilder().person("p", {}).group("g", "G").container("A", "iCloud", 3).person("a", {});
  std::string found;
  for (const auto& record : bookOf("A")->personsForIDs({"g", "unknown", "p", "", "a", "p"})) {
    if (const auto person = personOf(record)) found += "person " + *person->ID() + ' ';
    if (const auto group = groupOf(record)) found += "group " + *group->ID() + ' ';
  }
  EXPECT_EQ(found, "group g person p person a person p ");
}

TEST(Properties, NineAreCommonAndAllAreSupported) {
  std::string names;
  for (const auto& each : OxMacAddressBook::CommonProperty()) {
    names += each->name().substr(std::string_view("OxProPerty").size()) + ' ';
    EXPECT_EQ(each, OxProperty::propertyWithName(each->name()));
  }
  EXPECT_EQ(names, "Thumbnail Name Tags Phone Email Company Birthday Address Note ");
  const auto book = OxMacAddressBook::initWithID("X");
  EXPECT_EQ(&book->commonProperty(), &OxMacAddressBook::CommonProperty());
  EXPECT_EQ(book->supportProperty(), OxProperty::StandardPropertyArray());
}

}  // namespace
}  // namespace ox::test
