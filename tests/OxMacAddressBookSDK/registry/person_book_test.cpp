#include "ox/OxMacAddressBookSDK/registry/person_book.hpp"

#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

TEST(PersonBook, IsMadeWithoutADiscovery) {
  StoreBuilder().person("p").container("A:ABAccount", "Google", 3).person("q");
  makeBookOf(*person("q"));
  const auto book = person("q")->personAddressBook();
  ASSERT_TRUE(book);
  EXPECT_EQ(book->ID(), Text("A"));
  person("q")->addTag("seen");
  Sequence reports;
  const auto books = OxMacAddressBook::addressBookArrayWithProgressBlock(reports.callback());
  EXPECT_EQ(reports.text(), "33.33333206176758 66.66666412353516 100 100!");
  ASSERT_EQ(idsOf(books), "_local A");
  const auto& listed = books.element(1);
  EXPECT_NE(listed, book);
  EXPECT_EQ(book->name(), listed->name());
  EXPECT_EQ(book->serverType(), listed->serverType());
  EXPECT_EQ(book->tagManager(), listed->tagManager());
  EXPECT_EQ(listed->tagManager()->tagsByPersonID("q"), std::vector<std::string>{"seen"});
}

TEST(PersonBook, IsMadeOnceForAnAccount) {
  StoreBuilder().person("p").person("q");
  makeBookOf(*person("p"));
  const auto book = person("p")->personAddressBook();
  makeBookOf(*person("q"));
  EXPECT_EQ(person("q")->personAddressBook(), book);
  EXPECT_EQ(book->ID(), Text("_local"));
}

TEST(PersonBook, IsTheListedOneWhereTwoAccountsBearItsId) {
  StoreBuilder().container("A", "Google", 3).twinContainer("A:ABAccount", "iCloud", 3).person("p");
  makeBookOf(*person("p"));
  const auto book = person("p")->personAddressBook();
  ASSERT_TRUE(book);
  EXPECT_EQ(book, bookNamed("A"));
}

TEST(PersonBook, IsTheListedOneForPersonsOfOtherAccounts) {
  StoreBuilder().person("p").container("A", "Google", 3).person("q");
  makeBookOf(*person("p"));
  EXPECT_EQ(person("q")->personAddressBook(), bookNamed("A"));
}

}  // namespace
}  // namespace ox::test
