#include <cstdio>
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

BookList discover(const ProgressCallback& progress = nullptr) {
  return OxMacAddressBook::addressBookArrayWithProgressBlock(progress);
}

TEST(RecordFirstDiscovery, ReportsOneStepPerRecordThenDoneTwice) {
  StoreBuilder().person("1", {}).person("2", {}).person("3", {}).group("g", "G");
  Sequence reports;
  discover(reports.callback());
  EXPECT_EQ(reports.text(), "20 40 60 80 100 100!");
  reports.clear();
  discover(reports.callback());
  EXPECT_EQ(reports.text(), "100!");
}

TEST(RecordFirstDiscovery, ReportsSinglePrecisionSteps) {
  StoreBuilder().person("1", {}).person("2", {}).group("g", "G").group("h", "H").group("i", "I");
  Sequence reports;
  discover(reports.callback());
  EXPECT_EQ(reports.text(),
            "16.66666603088379 33.33333206176758 50 66.66666412353516 83.33333587646484 100 100!");
}

TEST(RecordFirstDiscovery, ReportsAnEmptyStoreAndCountsRecordsWithoutContainer) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).person("lost", {});
  source.hideFromContainerView("lost");
  Sequence reports;
  const auto books = discover(reports.callback());
  EXPECT_EQ(reports.text(), "50 100 100!");
  EXPECT_EQ(idsOf(books), "_local");
  EXPECT_EQ(_ABPerson::dictionarySave().count(), 0U);
  EXPECT_EQ(cachedIn(*books.element(0)), "");
}

TEST(RecordFirstDiscovery, AnEmptyLocalContainerIsListedFirst) {
  StoreBuilder().container("A:ABAccount", "iCloud", 3).person("p", {});
  const auto books = discover();
  EXPECT_EQ(idsOf(books), "_local A");
  EXPECT_EQ(books.element(0)->name(), Text("On My Mac"));
  EXPECT_EQ(cachedIn(*books.element(0)), "");
  EXPECT_EQ(cachedIn(*books.element(1)), "p");
}

TEST(RecordFirstDiscovery, OfTwoEmptyLocalContainersTheLaterOneComesFirst) {
  StoreBuilder().container("L2", "Second", 1).container("A", "iCloud", 3);
  EXPECT_EQ(idsOf(discover()), "L2 _local");
}

TEST(RecordFirstDiscovery, ALocalContainerMetThroughAGroupNeedsNoFallback) {
  StoreBuilder()
      .container("L2", "Second", 1)
      .container("A", "iCloud", 3)
      .person("p", {})
      .in("L2")
      .group("g", "G");
  const auto books = discover();
  EXPECT_EQ(idsOf(books), "L2 A");
  EXPECT_EQ(group("g")->addressBookID(), Text("L2"));
}

TEST(RecordFirstDiscovery, StampsEveryRecordAndFillsTheCachesInRecordOrder) {
  StoreBuilder()
      .container("A:ABAccount", "iCloud", 3)
      .person("a1", {})
      .group("ag", "G")
      .in("_local")
      .person("l1", {})
      .container("B:ABAccount", "Google", 3)
      .person("b1", {})
      .in("A:ABAccount")
      .person("a2", {});
  const auto books = discover();
  EXPECT_EQ(idsOf(books), "_local A B");
  EXPECT_EQ(cachedIn(*books.element(0)), "l1");
  EXPECT_EQ(cachedIn(*books.element(1)), "a1 a2");
  EXPECT_EQ(cachedIn(*books.element(2)), "b1");
  EXPECT_EQ(_ABPerson::dictionarySave().count(), 4U);
  EXPECT_EQ(_ABGroup::dictionarySave().count(), 1U);
  EXPECT_EQ(person("a2")->addressBookID(), Text("A"));
  EXPECT_EQ(group("ag")->addressBookID(), Text("A"));
}

TEST(RecordFirstDiscovery, PersonsOfTwoContainersWithOneStandardIdGoIntoTheBookMadeLast) {
  StoreBuilder()
      .container("A:ABAccount", "First", 3)
      .person("1", {})
      .twinContainer("A", "Second", 3)
      .person("2", {})
      .in("A:ABAccount")
      .person("3", {});
  const auto books = discover();
  EXPECT_EQ(idsOf(books), "_local A A");
  EXPECT_EQ(cachedIn(*books.element(1)), "1");
  EXPECT_EQ(cachedIn(*books.element(2)), "2 3");
}

TEST(RecordFirstDiscovery, EachCallGivesACopyOfTheListBuiltFirst) {
  StoreBuilder().person("p", {});
  const auto first = discover();
  StoreBuilder().container("A", "iCloud", 3).person("q", {});
  const auto second = discover();
  EXPECT_NE(first, second);
  EXPECT_EQ(first.element(0), second.element(0));
  EXPECT_EQ(second.size(), 1U);
  EXPECT_EQ(second.element(1), nullptr);
  EXPECT_EQ(idsOf(OxMacAddressBook::addressBookArray()), "_local");
  EXPECT_EQ(OxMacAddressBook::addressBookArray().element(0), first.element(0));
}

TEST(RecordFirstDiscovery, KeepsTheEmptyListOfAStoreThatDeniedAccess) {
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).person("p", {});
  source.denyContainerAccess();
  Sequence reports;
  EXPECT_EQ(discover(reports.callback()).size(), 0U);
  EXPECT_EQ(reports.text(), "50 100 100!");
  source.denyContainerAccess(false);
  EXPECT_EQ(discover().size(), 0U);
  EXPECT_EQ(person("p")->personAddressBook(), nullptr);
}

TEST(RecordFirstDiscovery, ACallbackThatThrowsLeavesTheListAbsentAndTheQueueUsable) {
  StoreBuilder().person("p", {});
  const auto throws = [](double, bool) { throw std::runtime_error("enough"); };
  EXPECT_THROW(discover(throws), std::runtime_error);
  const auto throwsAtTheEnd = [](double, bool finished) {
    if (finished) throw std::runtime_error("enough");
  };
  EXPECT_THROW(discover(throwsAtTheEnd), std::runtime_error);
  Sequence reports;
  EXPECT_EQ(cachedIn(*discover(reports.callback()).element(0)), "p");
  EXPECT_EQ(reports.text(), "50 100 100!");
  // A list that is there stays.
  EXPECT_THROW(discover(throws), std::runtime_error);
  reports.clear();
  discover(reports.callback());
  EXPECT_EQ(reports.text(), "100!");
}

TEST(RecordFirstDiscovery, FromItsOwnCallbackIsALogicError) {
  StoreBuilder().person("p", {});
  EXPECT_THROW(discover([](double, bool) { OxMacAddressBook::addressBookArray(); }),
               std::logic_error);
  EXPECT_EQ(idsOf(discover()), "_local");
}

const support::SecondProcess countsPersonsAndGroups("countsPersonsAndGroups", [](const auto&) {
  const auto records = ABAddressBook::sharedAddressBook();
  std::printf("%zu %zu", records->people().size(), records->groups().size());
  return 0;
});

TEST(RecordFirstDiscovery, RefusesToMakeWhatNeedsTheListFromItsCallbackAndLeavesNothing) {
  StoreBuilder().person("p", {.first = "Ann"}).group("g", "G");
  const auto book = bookNamed("_local");
  const auto contacts = CNContactStore::init()->unifiedContactsMatchingPredicate_keysToFetch_error(
      CNContact::predicateForContactsWithIdentifiers({"p"}), {"all"}, nullptr);
  ASSERT_EQ(contacts.size(), 1U);
  const std::vector<std::function<void()>> works = {
      [&] { book->newPerson(); },
      [&] { book->addOneFromOtherPerson(std::shared_ptr<IOxPerson>(person("p"))); },
      [&] { book->addOneFromOtherPerson(contacts.front()); },
      [&] { group("g")->addSubGroupByName("H"); },
  };
  for (const auto& work : works) {
    EXPECT_THROW(discover([&](double, bool) { work(); }), std::logic_error);
    EXPECT_EQ(countsPersonsAndGroups.run().output, "1 1");
    EXPECT_EQ(cachedIn(*book), "p");
    EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
  }
}

TEST(RecordFirstDiscovery, ConcurrentFirstCallsBuildOneList) {
  StoreBuilder().persons("p", 20);
  std::vector<BookList> lists(4);
  std::vector<std::thread> threads;
  threads.reserve(lists.size());
  for (auto& list : lists) threads.emplace_back([&list] { list = discover(); });
  for (auto& thread : threads) thread.join();
  for (const auto& list : lists) EXPECT_EQ(list.element(0), lists[0].element(0));
  EXPECT_EQ(lists[0].element(0)->allPersonArray()->size(), 20U);
}

}  // namespace
}  // namespace ox::test
