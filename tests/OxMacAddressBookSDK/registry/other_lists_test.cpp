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
  EXPECT_EQ(books.element(0)->serverType(), 0);
  EXPECT_EQ(books.element(1)->serverType(), 9);
  EXPECT_EQ(books.element(1)->validContainerID(), books.element(1)->ID()) << "no container";
  EXPECT_EQ(books.element(1)->allPersons(), nullptr);
  EXPECT_EQ(OxMacAddressBook::addressBookArray(), books);
}

TEST(AccountIdDiscovery, ListsTheLocalBookOfAnEmptyStore) {
  support::setSystemVersion("11.0");
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray()), "_local");
}

// An account of its own, a person and a group in it, and a person in each account known before.
void addAnAccountAndRecords() {
  StoreBuilder().person("l2", {}).in("A").person("a2", {});
  StoreBuilder().container("N", "Google", 3).person("n", {}).group("ng", "G");
}

std::string booksAndCaches(const BookList& books) {
  std::string text;
  for (const auto& book : books) text += *book->ID() + '(' + cachedIn(*book) + ") ";
  return text;
}

TEST(Discovery, OfAnyKindSeesNoAccountThatIsAddedAfterItsFirstCall) {
  StoreBuilder().person("l", {}).container("A", "Yahoo", 3).person("a", {});
  Sequence reports;
  const auto progress = reports.callback();
  const auto byContainers = OxMacAddressBook::addressBookArrayWithProgressBlock2(progress);
  const auto second = OxMacAddressBook::addressBookArray2();
  const auto third = OxMacAddressBook::addressBookArray3();
  reports.clear();
  addAnAccountAndRecords();
  EXPECT_EQ(booksAndCaches(OxMacAddressBook::addressBookArrayWithProgressBlock2(progress)),
            "_local(l) A(a) ");
  EXPECT_EQ(reports.text(), "");
  EXPECT_EQ(booksAndCaches(OxMacAddressBook::addressBookArrayWithProgressBlock(progress)),
            "_local(l) A(a) ");
  EXPECT_EQ(reports.text(), "100!");
  EXPECT_EQ(booksAndCaches(OxMacAddressBook::addressBookArray2()), "_local() A() ");
  EXPECT_EQ(booksAndCaches(OxMacAddressBook::addressBookArray3()), "_local(l) A(a) ");
  EXPECT_EQ(OxMacAddressBook::addressBookArrayWithProgressBlock2(progress).element(1),
            byContainers.element(1));
  EXPECT_EQ(OxMacAddressBook::addressBookArray2(), second);
  EXPECT_EQ(OxMacAddressBook::addressBookArray3(), third);
}

TEST(AccountIdDiscovery, SeesNoAccountThatIsAddedAfterItsFirstCall) {
  support::setSystemVersion("10.10");
  StoreBuilder().person("l", {}).container("A", "Yahoo", 3).person("a", {});
  const auto first = OxMacAddressBook::addressBookArray();
  ASSERT_EQ(idsOf(first), "_local A");
  addAnAccountAndRecords();
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray()), "_local A");
  EXPECT_EQ(OxMacAddressBook::addressBookArray(), first);
  // The list of the other kind is another one, not built yet.
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArrayWithProgressBlock(nullptr)), "_local A N");
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
