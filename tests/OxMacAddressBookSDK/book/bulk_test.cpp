#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/base/base64.hpp"
#include "ox/base/failures.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/OxAddressBookSDK/general/loose_group.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

const support::SecondProcess listsNames("listsNames", [](const auto& arguments) {
  const auto book = bookNamed(arguments.at(0));
  for (const auto& each : book->allPersons()->snapshot()) {
    std::printf("%s ", each->displayName()->c_str());
  }
  for (const auto& each : book->allGroups()) {
    std::printf("[%s:", each->displayName()->c_str());
    for (const auto& below : each->subGroups()) std::printf(" <%s>", below->displayName()->c_str());
    for (const auto& member : each->persons()) std::printf(" %s", member->displayName()->c_str());
    std::printf("] ");
  }
  return 0;
});

TEST(BulkSave, CountsItsItemsFromZero) {
  StoreBuilder().persons("p", 2).group("g", "G").group("h", "H");
  Reports run;
  bookNamed("_local")->saveDataBlock(run.saveCallback());
  EXPECT_EQ(run.wait(), "0 25 50 75 100 100 data!");
  EXPECT_NE(run.worker(), std::this_thread::get_id());
  EXPECT_TRUE(OxAddressBookGeneral::addressBookWithData(run.data()));
}

TEST(BulkSave, HoldsAPictureAsItStandsInTheStore) {
  const auto jpeg = images::encodeJpeg(Image{32, 32, std::vector<std::uint8_t>(4096, 200)});
  StoreBuilder().person("p", {.image = jpeg});
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  ASSERT_TRUE(data);
  EXPECT_NE(data->find("\"file\":\"" + base64(*jpeg) + "\""), std::string::npos);
  const auto before = person("p")->thumbnail();
  loaded(book, data);
  const auto people = ABAddressBook::sharedAddressBook()->people();
  ASSERT_EQ(people.size(), 1U);
  const auto after = hostPerson(people[0])->thumbnail();
  ASSERT_TRUE(after);
  EXPECT_EQ(*after, *before);
}

TEST(BulkSave, ReportsInSinglePrecision) {
  StoreBuilder().persons("p", 3);
  Reports run;
  bookNamed("_local")->saveDataBlock(run.saveCallback());
  EXPECT_EQ(run.wait(), "0 33.33333206176758 66.66666412353516 100 100 data!");
}

TEST(BulkSave, RightAfterALoadHoldsTheRemovedPersonsEmpty) {
  StoreBuilder().persons("p", 1).group("g", "G");
  const auto book = bookNamed("_local");
  loaded(book, savedData(book));
  Reports run;
  book->saveDataBlock(run.saveCallback());
  // The removed one is in the cache before the new one, and counts.
  EXPECT_EQ(run.wait(), "0 33.33333206176758 66.66666412353516 100 100 data!");
  const auto general = OxAddressBookGeneral::addressBookWithData(run.data());
  ASSERT_EQ(general->personsDic().count(), 2U);
  EXPECT_EQ(general->groupsDic().count(), 1U);
  const auto removed = general->personsDic().objectForKey("p0");
  ASSERT_TRUE(removed);
  ASSERT_EQ(removed->values().size(), 1U);
  const auto name =
      std::dynamic_pointer_cast<OxMutableSingleValue>(removed->valueByPropertyName(OxProPertyName));
  ASSERT_TRUE(name);
  const auto parts = name->value().host<OxObjectPersonName>();
  ASSERT_TRUE(parts);
  EXPECT_EQ(parts->displayString(), std::nullopt) << "a name without parts, as of any person";
}

TEST(BulkSave, OfABookWithoutCacheHoldsItsGroupsOnly) {
  StoreBuilder().persons("p", 1).group("g", "G").member("g", "p0");
  Reports run;
  OxMacAddressBook::initWithID("_local")->saveDataBlock(run.saveCallback());
  EXPECT_EQ(run.wait(), "0 100 100 data!");
  const auto general = OxAddressBookGeneral::addressBookWithData(run.data());
  EXPECT_EQ(general->groupsDic().count(), 1U);
  EXPECT_EQ(general->personsDic().count(), 0U);
}

TEST(BulkSave, ChangesNothing) {
  StoreBuilder().persons("p", 2);
  savedData(bookNamed("_local"));
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(BulkLoad, OfAnEmptyBookReportsItsPhasesAndEmptiesTheBook) {
  StoreBuilder().persons("p", 2).group("g", "G");
  const auto book = bookNamed("_local");
  EXPECT_EQ(loaded(book, OxAddressBookGeneral::init()->saveToData()), "0 50 100 100 100!");
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 0U);
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->groups().size(), 0U);
  EXPECT_EQ(listsNames.run({"_local"}).output, "");
}

TEST(BulkLoad, OfOneGroupAndOnePersonReportsBothPasses) {
  StoreBuilder().persons("p", 1).group("g", "G").member("g", "p0");
  const auto book = bookNamed("_local");
  EXPECT_EQ(loaded(book, savedData(book)), "0 25 50 50 100 100 100 100!");
  EXPECT_EQ(listsNames.run({"_local"}).output, "p0 [G: p0] ");
}

TEST(BulkLoad, ReportsInSinglePrecision) {
  StoreBuilder().persons("p", 3).container("A:ABAccount", "iCloud", 3).group("a", "A");
  StoreBuilder().in("A").group("b", "B").group("c", "C");
  EXPECT_EQ(loaded(bookNamed("_local"), savedData(bookNamed("_local"))),
            "0 16.66666603088379 33.33333206176758 50 50 100 100 100!");
  EXPECT_EQ(loaded(bookNamed("A"), savedData(bookNamed("A"))),
            "0 16.66666603088379 33.33333206176758 50 50 "
            "66.66666412353516 83.33332824707031 100 100 100 100!");
}

TEST(BulkLoad, OfABookWithoutCacheRemovesItsGroupsAndNoPersons) {
  StoreBuilder().persons("p", 1).group("g", "G").member("g", "p0");
  const auto data = savedData(bookNamed("_local"));
  const auto book = OxMacAddressBook::initWithID("_local");
  EXPECT_EQ(loaded(book, data), "0 25 50 50 100 100 100 100!");
  EXPECT_EQ(cachedIn(*book), "no cache");
  // The person beside the one that was there; the new group alone.
  EXPECT_EQ(listsNames.run({"_local"}).output, "p0 p0 [G: p0] ");
}

TEST(BulkLoad, RebuildsTheTreeInAnotherBook) {
  StoreBuilder()
      .persons("p", 2)
      .group("g", "G")
      .group("h", "H")
      .subgroup("g", "h")
      .members("g", {"p1"})
      .members("h", {"p1", "p0"})
      .container("A:ABAccount", "iCloud", 3)
      .persons("a", 1);
  const auto cloud = bookNamed("A");
  // 2 groups and 2 persons: 50 / 4 each, then 50 / 2 each.
  EXPECT_EQ(loaded(cloud, savedData(bookNamed("_local"))),
            "0 12.5 25 37.5 50 50 75 100 100 100 100!");
  EXPECT_EQ(listsNames.run({"A"}).output, "p0 p1 [G: <H> p1] [H: p1 p0] ");
  EXPECT_EQ(listsNames.run({"_local"}).output, "p0 p1 [G: <H> p1] [H: p1 p0] ");
}

TEST(BulkLoad, LeavesRemovedPersonsInTheCacheBeforeTheNewOnes) {
  StoreBuilder().persons("p", 2);
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  loaded(book, data);
  ASSERT_EQ(book->allPersonsCount(), 4U);
  EXPECT_EQ(cachedIn(*book).substr(0, 6), "p0 p1 ");
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 2U);
  loaded(book, OxAddressBookGeneral::init()->saveToData());
  EXPECT_EQ(book->allPersonsCount(), 2U) << "those that this load has removed";
}

TEST(BulkLoad, OfUnreadableDataTouchesNothing) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 1);
  const auto book = bookNamed("_local");
  const auto good = savedData(book);
  EXPECT_EQ(loaded(book, nullptr), "0!");
  EXPECT_EQ(loaded(book, makeData("")), "0!");
  EXPECT_EQ(loaded(book, makeData(good->substr(0, good->size() - 1))), "0!");
  auto flipped = *good;
  flipped[flipped.find("p0")] ^= 1;
  EXPECT_EQ(loaded(book, makeData(flipped)), "0!");
  auto newer = *good;
  newer.replace(newer.find("\"version\":1"), 11, "\"version\":3");
  EXPECT_EQ(loaded(book, makeData(newer)), "0!");
  EXPECT_EQ(watch.counts().failures, 4U) << "missing data is none";
  EXPECT_EQ(cachedIn(*book), "p0");
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(BulkLoad, DeletesNoGroupsOfABookThatMayHaveNoneButMakesNewOnes) {
  StoreBuilder().persons("p", 1).group("g", "New");
  const auto data = savedData(bookNamed("_local"));
  StoreBuilder().container("G:ABAccount", "Google", 3).persons("q", 1).group("old", "Old");
  const auto google = OxMacAddressBook::initWithContainer(containerOf("G:ABAccount", "Google", 3));
  ASSERT_FALSE(google->canCreateGroup());
  EXPECT_EQ(loaded(google, data), "0 25 50 50 100 100 100 100!");
  std::string groups;
  for (const auto& each : ABAddressBook::sharedAddressBook()->groups()) {
    const auto group = hostGroup(each);
    groups += *group->displayName() + " in " + group->AccountID().value_or("-") + "; ";
  }
  EXPECT_EQ(groups, "New in _local; Old in G; New in G; ");
}

TEST(BulkLoad, LinksNothingForKeysThatPointNowhere) {
  StoreBuilder().persons("p", 1).group("g", "G").group("h", "H").subgroup("g", "h");
  const auto general = OxAddressBookGeneral::init();
  general->addGroup(group("g"));  // names h, which is not in the book
  const auto book = bookNamed("_local");
  EXPECT_EQ(loaded(book, general->saveToData()), "0 50 50 100 100 100 100!");
  EXPECT_EQ(listsNames.run({"_local"}).output, "[G:] ");
}

TEST(BulkLoad, LeavesOutTheLinksThatWouldPutAGroupBelowItself) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 2);
  const auto g = std::make_shared<LooseGroup>("g", "G");
  const auto h = std::make_shared<LooseGroup>("h", "H");
  g->below = {g, h};
  g->members = {person("p0")};
  h->below = {g};
  h->members = {person("p1")};
  const auto general = OxAddressBookGeneral::init();
  for (const auto& each : {g, h}) {
    general->addGroup(each);
    each->below.clear();  // which hold each other
  }
  for (const auto* const id : {"p0", "p1"}) general->addPerson(person(id));
  const auto book = bookNamed("_local");
  EXPECT_EQ(loaded(book, general->saveToData()), "0 12.5 25 37.5 50 50 75 100 100 100 100!");
  EXPECT_EQ(listsNames.run({"_local"}).output, "p0 p1 [G: <H> p0] [H: p1] ");
  EXPECT_EQ(watch.counts().refusals, 2U) << "G below G, and G below H";
  EXPECT_EQ(watch.counts().failures, 0U);
}

TEST(BulkLoad, GoesOnWhenItsCallbackThrows) {
  StoreBuilder().persons("p", 1);
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  Reports run;
  book->loadWithData_progressBlock(data, [report = run.loadCallback()](double value, bool done) {
    report(value, done);
    if (!done) throw std::runtime_error("no");
  });
  EXPECT_EQ(run.wait(), "0 50 50 100 100 100!");
  book->loadThreed(data);  // and none at all
}

// The host is told of what its callback did, and takes nothing of others for its own.
TEST(BulkLoad, IsWholeWhateverElseFailsMeanwhile) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 5);
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  Reports run;
  book->loadWithData_progressBlock(data, [report = run.loadCallback()](double value, bool done) {
    OxAddressBookGeneral::addressBookWithData(makeData("no book"));
    std::thread([] { failures::notice(FailureKind::Other, "of somebody else"); }).join();
    report(value, done);
  });
  EXPECT_EQ(run.wait(), "0 10 20 30 40 50 50 100 100 100!");
  EXPECT_EQ(watch.counts(), (failures::Counts{0, 10})) << "one a report";
  EXPECT_EQ(failures::Watch().earlier().size(), 10U) << "of somebody else";
  EXPECT_EQ(listsNames.run({"_local"}).output, "p0 p1 p2 p3 p4 ");
}

TEST(BulkSteps, RunDirectlyReportToTheCallbackThatIsSet) {
  StoreBuilder().persons("p", 1).group("g", "G");
  const auto book = bookNamed("_local");
  Reports saving;
  book->setProgressBlock(saving.saveCallback());
  book->saveDataThreed();
  EXPECT_EQ(saving.wait(), "0 50 100 100 data!");
  EXPECT_EQ(saving.worker(), std::this_thread::get_id());

  Sequence loading;
  book->setLoadProgressBlock(loading.callback());
  book->loadThreed(saving.data());
  EXPECT_EQ(loading.text(), "0 25 50 50 100 100 100 100!");
  loading.clear();
  const auto general = OxAddressBookGeneral::addressBookWithData(saving.data());
  book->addGroupAndPersonByGeneralAddressBook(general);
  EXPECT_EQ(loading.text(), "25 50 50");
  loading.clear();
  book->adjustGroupAndPersonRelatedByGeneralAddressBook(general);
  EXPECT_EQ(loading.text(), "100 100");
}

}  // namespace
}  // namespace ox::test
