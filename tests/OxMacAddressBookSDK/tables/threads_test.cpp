// Callers that overlap must not corrupt what the process remembers. Means most under the thread
// sanitizer.
#include <gtest/gtest.h>
#include <thread>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

TEST(Threads, ShareTablesCachesAndListsWithoutHarm) {
  constexpr int kPersons = 50;
  constexpr int kThreads = 4;
  StoreBuilder().container("A", "iCloud", 3).persons("Ann", kPersons).group("g", "G");
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int number = 0; number < kThreads; ++number) {
    threads.emplace_back([number] {
      const auto books = OxMacAddressBook::addressBookArray();
      const auto persons = books.element(1)->allPersons();
      for (const auto& each : persons->snapshot()) {
        const auto person = recordOf(each);
        EXPECT_EQ(person->displayName(), person->ID());
        person->nameChineesPinyin();
        if (number == 0) person->removeDisplayNameCache();
        person->setAddressID(number % 2 == 0 ? "A" : "B");
        person->addressBookID();
        person->valueByPropertyName(OxProPertyName);
      }
      group("g")->addressBookID();
      OxMacAddressBook::addressBookArray2();
      OxMacAddressBook::addressBookArray3();
      books.element(1)->allPersons2();
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(_ABGroup::dictionarySave().count(), 1U);
  EXPECT_EQ(_ABPerson::dictionarySave().count(), std::size_t{kPersons});
  EXPECT_GE(OxMacAddressBook::addressBookArray().element(1)->allPersonArray()->size(),
            std::size_t{kPersons});
}

TEST(Threads, FillOnePersonCacheOnce) {
  StoreBuilder().persons("Ann", 50);
  const auto container = CNContactStore::init()->containersMatchingPredicate_error({}, nullptr)[0];
  const auto book = OxMacAddressBook::initWithContainer(container);
  std::vector<std::thread> threads;
  threads.reserve(4);
  for (int i = 0; i < 4; ++i) threads.emplace_back([&book] { book->allPersons(); });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(book->allPersonsCount(), 50U);
}

}  // namespace
}  // namespace ox::test
