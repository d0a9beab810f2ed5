#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

TEST(GroupName, IsNeverMissingAndAMissingOneIsStoredEmpty) {
  StoreBuilder().group("g", std::nullopt);
  EXPECT_EQ(group("g")->displayName(), Text(""));
  group("g")->setDisplayName("Friends\n");
  EXPECT_EQ(group("g")->displayName(), Text("Friends\n"));
  group("g")->setDisplayName(std::nullopt);
  const PropertyValue stored = group("g")->valueForProperty(kABGroupNameProperty);
  EXPECT_EQ(std::get<Object>(stored), Object(""));
  // Nothing was saved by that.
  EXPECT_TRUE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(GroupBookId, IsTheStampElseTheContainersStandardId) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).group("g", "G").group("h", "H");
  EXPECT_EQ(group("g")->AccountID(), Text("A"));
  group("g")->setAddressID("X");
  group("g")->setAddressID(std::nullopt);
  EXPECT_EQ(group("g")->addressBookID(), Text("X"));
  EXPECT_EQ(group("g")->AccountID(), Text("A"));
  EXPECT_EQ(_ABGroup::dictionarySave().count(), 1U);
  EXPECT_EQ(group("h")->addressBookID(), Text("A"));
  EXPECT_EQ(_ABGroup::dictionarySave().count(), 2U);
  EXPECT_EQ(_ABPerson::dictionarySave().count(), 0U);
}

TEST(GroupBookId, WithoutContainerComesFromTheStorePath) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).group("g", "G").group("h", "H").group("i", "I");
  for (const auto* id : {"g", "h", "i"}) source.hideFromContainerView(id);
  source.describe("g", "g\n/x/Library/Application Support/AddressBook/X/Y/Z.db\n");
  source.describe("h", "h\n/x/Library/Application Support/AddressBook/Z.db\n");
  source.describe("i", "i /x/Library/Application Support/AddressBook/X/Y/Z.db");
  EXPECT_EQ(group("g")->AccountID(), Text("Y"));
  EXPECT_EQ(group("g")->addressBookID(), Text("Y"));
  EXPECT_EQ(group("h")->AccountID(), Text());
  EXPECT_EQ(group("h")->addressBookID(), Text("_local"));
  EXPECT_EQ(group("i")->addressBookID(), Text("_local"));
}

TEST(GroupBookId, ComesFromTheStorePathWhereAccessToTheContainersIsDenied) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).group("l", "L").container("A:ABAccount", "iCloud", 3).group("g", "G");
  source.denyContainerAccess();
  source.resetCounts();
  EXPECT_EQ(group("g")->AccountID(), Text("A"));
  EXPECT_EQ(group("l")->AccountID(), Text());
  EXPECT_EQ(source.counts().containerOf, 2U);
  EXPECT_EQ(source.counts().description, 2U);
  EXPECT_EQ(group("g")->addressBookID(), Text("A"));
  EXPECT_EQ(group("l")->addressBookID(), Text("_local"));
}

TEST(GroupAddressBook, IsTheFirstDiscoveredBookOfTheGroupsId) {
  StoreBuilder()
      .container("A", "First", 3)
      .group("g", "G")
      .twinContainer("A:ABAccount", "Second", 3)
      .group("h", "H");
  const auto books = OxMacAddressBook::addressBookArray();
  ASSERT_EQ(idsOf(books), "_local A A");
  EXPECT_EQ(group("g")->groupAddressBook(), books.element(1));
  EXPECT_EQ(group("h")->groupAddressBook(), books.element(1));
  group("g")->setAddressID("_local");
  EXPECT_EQ(group("g")->groupAddressBook(), books.element(0));
  group("g")->setAddressID("unknown");
  EXPECT_EQ(group("g")->groupAddressBook(), nullptr);
}

TEST(IncludePersons, PutAPersonWhereTheLastSubGroupHasIt) {
  StoreBuilder()
      .person("p1", {})
      .person("p2", {})
      .person("p3", {})
      .group("A", "A")
      .members("A", {"p1", "p2"})
      .group("B", "B")
      .members("B", {"p2", "p3"})
      .subgroup("A", "B")
      .group("C", "C")
      .members("C", {"p1", "p2"})
      .group("D", "D")
      .members("D", {"p3", "p2"})
      .subgroup("C", "D");
  EXPECT_EQ(idsOf(group("A")->includePersons()), "p1 p2 p3");
  EXPECT_EQ(idsOf(group("C")->includePersons()), "p1 p3 p2");
  EXPECT_EQ(group("A")->includePersonsCount(), 3U);
  EXPECT_EQ(group("C")->includePersonsCount(), 3U);
  EXPECT_EQ(idsOf(group("A")->persons()), "p1 p2");
  EXPECT_EQ(idsOf(group("B")->includePersons()), idsOf(group("B")->persons()));
  EXPECT_EQ(idsOf(group("A")->subGroups()), "B");
  EXPECT_EQ(group("A")->subGroupsCount(), 1U);
  EXPECT_EQ(group("B")->subGroupsCount(), 0U);
  EXPECT_EQ(idsOf(_ABGroup::personFromGroup(group("C"))), "p1 p3 p2");
  EXPECT_TRUE(_ABGroup::personFromGroup(nullptr).empty());
}

TEST(HostGroup, IsNoPersonAndNothingForNothing) {
  StoreBuilder().person("p", {}).group("g", "G");
  const auto records = ABAddressBook::sharedAddressBook();
  EXPECT_EQ(hostGroup(records->recordForUniqueId("p")), nullptr);
  EXPECT_EQ(hostPerson(records->recordForUniqueId("g")), nullptr);
  EXPECT_EQ(hostGroup(nullptr), nullptr);
  EXPECT_EQ(group("g")->ID(), Text("g"));
  EXPECT_EQ(person("p")->ID(), Text("p"));
}

}  // namespace
}  // namespace ox::test
