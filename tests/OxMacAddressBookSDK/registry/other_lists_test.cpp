#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

TEST(AccountIdDiscovery, ListsTheLocalBookFirstThenIdsAsTheyAreMet) {
  support::setSystemVersion("10.10");
  StoreBuilder()
      .container("G:ABAccount", "Groups", 3)
      .group("g", "G")
      .container("B:ABAccount", "B", 3)
      .person("b", {})
      .container("A:ABAccount", "A", 3)
      .person("a", {})
      .in("B:ABAccount")
      .person("b2", {});
  const auto books = OxMacAddressBook::addressBookArray();
  EXPECT_EQ(idsOf(books), "_local B A G");
  std::string names;
  for (const auto& book : books) names += *book->name() + ';';
  EXPECT_EQ(names, "On My Mac;B;A;G;");
  EXPECT_EQ(books.element(0)->_serverType, 0);
  EXPECT_EQ(books.element(1)->_serverType, 9);
  EXPECT_EQ(books.element(1)->_container, nullptr);
  EXPECT_EQ(books.element(1)->allPersons(), nullptr);
  EXPECT_EQ(OxMacAddressBook::addressBookArray(), books);
}

TEST(AccountIdDiscovery, ListsTheLocalBookOfAnEmptyStore) {
  support::setSystemVersion("11.0");
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray()), "_local");
}

TEST(AddressBookArray2, AnICloudBookStandsForTheEmptyLocalOne) {
  StoreBuilder().container("A", "icloud", 3).person("p", {}).group("g", "G");
  const auto books = OxMacAddressBook::addressBookArray2();
  EXPECT_EQ(idsOf(books), "A");
  EXPECT_EQ(cachedIn(*books.element(0)), "");
  EXPECT_EQ(person("p")->addressBookID(), Text("A"));
  EXPECT_EQ(_ABGroup::dictionarySave().count(), 1U);
  EXPECT_EQ(OxMacAddressBook::addressBookArray2(), books);
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArrayWithProgressBlock(nullptr)), "_local A");
}

TEST(AddressBookArray2, AnICloudBookFoundThroughAGroupCountsToo) {
  StoreBuilder().container("A", "iCloud", 3).group("g", "G");
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray2()), "A");
}

TEST(AddressBookArray2, WithoutICloudTheEmptyLocalBookIsListed) {
  StoreBuilder().container("A", "Google", 3).person("p", {});
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray2()), "_local A");
}

TEST(AddressBookArray2, ALocalBookWithRecordsIsListedBesideICloud) {
  StoreBuilder().container("A", "iCloud", 3).person("p", {}).in("_local").person("l", {});
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray2()), "_local A");
}

TEST(AddressBookArray3, LoadsTheBooksItListsAndAnICloudBookStandsForTheEmptyLocalOne) {
  StoreBuilder()
      .container("A:ABAccount", "iCloud", 3)
      .person("p", {})
      .group("g", "G")
      .container("B", "empty", 3);
  const auto books = OxMacAddressBook::addressBookArray3();
  EXPECT_EQ(idsOf(books), "A");
  EXPECT_EQ(cachedIn(*books.element(0)), "p");
  EXPECT_EQ(_ABGroup::dictionarySave().count(), 0U);
  EXPECT_EQ(OxMacAddressBook::addressBookArray3(), books);
}

TEST(AddressBookArray3, WithoutICloudTheLocalBookIsListedFirst) {
  StoreBuilder().container("A", "Google", 3).person("p", {});
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray3()), "_local A");
}

TEST(AddressBookArray3, AnAcceptedLocalContainerIsListedOnce) {
  StoreBuilder().person("l", {}).container("A", "iCloud", 3).person("p", {});
  const auto books = OxMacAddressBook::addressBookArray3();
  EXPECT_EQ(idsOf(books), "_local A");
  EXPECT_EQ(cachedIn(*books.element(0)), "l");
}

}  // namespace
}  // namespace ox::test
