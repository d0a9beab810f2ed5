#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

TEST(StandID, LosesTheAccountSuffixWhereverItStands) {
  const struct {
    Text identifier;
    Text standard;
  } rows[] = {
      {"T:ABAccount", "T"},
      {"T", "T"},
      {"A:ABAccountB:ABAccount", "AB"},
      {"T:abaccount", "T:abaccount"},
      {":ABAccount", ""},
      {"", ""},
      {":AB:ABAccountAccount", ":ABAccount"},
      {std::nullopt, std::nullopt},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(OxMacAddressBook::standID(row.identifier), row.standard);
  }
}

TEST(StandABPersonID, AppendsTheSuffixUnlessTheTextHoldsIt) {
  const struct {
    Text identifier;
    Text personID;
  } rows[] = {
      {"X", "X:ABPerson"},
      {"X:ABPerson", "X:ABPerson"},
      {"a:ABPersonb", "a:ABPersonb"},
      {"X:abperson", "X:abperson:ABPerson"},
      {"", ":ABPerson"},
      {std::nullopt, std::nullopt},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(OxMacAddressBook::standABPersonID(row.identifier), row.personID);
  }
}

bool isNeeded(std::string_view identifier) {
  const auto store = CNContactStore::init();
  for (const auto& container : store->containersMatchingPredicate_error({}, nullptr)) {
    if (container->identifier() != identifier) continue;
    return OxMacAddressBook::needAddAdreessBook_ab_store(container,
                                                         ABAddressBook::sharedAddressBook(), store);
  }
  ADD_FAILURE() << "no container " << identifier;
  return false;
}

TEST(NeedAddAdreessBook, TheFirstTellingGroupDecides) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real())
      .container("suffix first", "A", 3)
      .group("1:ABGroup", "hidden")
      .group("2:ABGroup", "known")
      .person("1p", {})
      .container("plain first", "B", 3)
      .group("plain", "hidden")
      .group("3:ABGroup", "known")
      .container("all plain", "C", 3)
      .group("plain 1", "hidden")
      .group("plain 2", "hidden")
      .person("2p", {});
  for (const auto* hidden : {"1:ABGroup", "plain", "plain 1", "plain 2"}) {
    source.hideFromRecordView(hidden);
  }
  EXPECT_FALSE(isNeeded("suffix first"));
  EXPECT_TRUE(isNeeded("plain first"));
  // Contacts are not looked at where there are groups.
  source.resetCounts();
  EXPECT_FALSE(isNeeded("all plain"));
  EXPECT_EQ(source.counts().recordsIn, 1U);
}

TEST(NeedAddAdreessBook, WithoutGroupsTheFirstTellingContactDecides) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real())
      .container("suffix first", "A", 3)
      .person("1:ABPerson", {})
      .person("2:ABPerson", {})
      .container("plain first", "B", 3)
      .person("plain", {})
      .person("3:ABPerson", {})
      .container("all plain", "C", 3)
      .person("plain 1", {})
      .container("known", "D", 3)
      .person("4:ABPerson", {})
      .container("empty", "E", 3);
  for (const auto* hidden : {"1:ABPerson", "plain", "plain 1"}) source.hideFromRecordView(hidden);
  EXPECT_FALSE(isNeeded("suffix first"));
  EXPECT_TRUE(isNeeded("plain first"));
  EXPECT_FALSE(isNeeded("all plain"));
  EXPECT_TRUE(isNeeded("known"));
  EXPECT_FALSE(isNeeded("empty"));
}

TEST(NeedAddAdreessBook, AFailedQueryIsAnEmptyOne) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).container("A", "A", 3).person("p", {});
  const auto store = CNContactStore::init();
  const auto records = ABAddressBook::sharedAddressBook();
  const auto container = containerOf("A", "A", 3);
  EXPECT_TRUE(OxMacAddressBook::needAddAdreessBook_ab_store(container, records, store));
  source.denyContainerAccess();
  EXPECT_FALSE(OxMacAddressBook::needAddAdreessBook_ab_store(container, records, store));
  EXPECT_FALSE(OxMacAddressBook::needAddAdreessBook_ab_store(nullptr, records, store));
}

TEST(HasContainerArray, TheLocalBookAlwaysBelongsOthersByStandardId) {
  const auto local = OxMacAddressBook::initWithID("_local");
  const auto other = OxMacAddressBook::initWithID("X");
  const std::vector<CNContainerPtr> containers = {containerOf("W", "", 3),
                                                  containerOf("X:ABAccount", "", 3)};
  EXPECT_TRUE(OxMacAddressBook::hasContainerArray_addressArray({}, local));
  EXPECT_FALSE(OxMacAddressBook::hasContainerArray_addressArray({}, other));
  EXPECT_TRUE(OxMacAddressBook::hasContainerArray_addressArray(containers, other));
  EXPECT_FALSE(OxMacAddressBook::hasContainerArray_addressArray(
      containers, OxMacAddressBook::initWithID("X:ABAccount")));
  EXPECT_FALSE(OxMacAddressBook::hasContainerArray_addressArray(containers, nullptr));
}

TEST(HasAddress, ALocalContainerIsAlwaysRepresentedOthersByStandardId) {
  const std::vector<std::shared_ptr<OxMacAddressBook>> books = {OxMacAddressBook::initWithID("W"),
                                                                OxMacAddressBook::initWithID("X")};
  EXPECT_TRUE(OxMacAddressBook::hasAddress_container({}, containerOf("L", "", 1)));
  EXPECT_FALSE(OxMacAddressBook::hasAddress_container({}, containerOf("X", "", 3)));
  EXPECT_TRUE(OxMacAddressBook::hasAddress_container(books, containerOf("X:ABAccount", "", 2)));
  EXPECT_FALSE(OxMacAddressBook::hasAddress_container(books, containerOf("x", "", 3)));
  EXPECT_FALSE(OxMacAddressBook::hasAddress_container(books, nullptr));
}

}  // namespace
}  // namespace ox::test
