#include <gtest/gtest.h>
#include <thread>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/no_more_threads.hpp"
#include "tests/support/second_process.hpp"

namespace ox::test {
namespace {

using support::NoMoreThreads;
using support::SourceCounts;

std::shared_ptr<OxMacAddressBook> bookOf(const std::string& container) {
  return OxMacAddressBook::initWithContainer(containerOf(container, container, 3));
}

// "ann ben [Friends: ann]": the names of everything in the container.
std::string contentOf(OxMacAddressBook& book) {
  std::string text;
  for (const auto& each : book.allPersons()->snapshot()) text += *each->displayName() + ' ';
  for (const auto& group : book.allGroups()) {
    text += '[' + *group->displayName() + ':';
    for (const auto& member : group->persons()) text += ' ' + *member->displayName();
    text += "] ";
  }
  return text;
}

const support::SecondProcess tellsContent("tellsContent", [](const auto& arguments) {
  std::printf("%s", contentOf(*bookOf(arguments.at(0))).c_str());
  return 0;
});

// The book as another process sees it.
std::string seenElsewhere(const std::string& container) {
  return tellsContent.run({container}).output;
}

TEST(BulkLoad, ThatIsCutShortLeavesNothingAndForgetsNothingOfOthers) {
  const failures::Watch watch;
  auto& source = SwitchedSource::install();
  struct Row {
    const char* container;
    std::uint64_t SourceCounts::*operation;
    std::uint64_t passing;
    const char* reports;
    const char* content;
  };
  const std::vector<Row> rows = {
      {"group", &SourceCounts::remove, 0, "0 100!", "group0 group1 [G: group1 group0] "},
      {"person", &SourceCounts::remove, 2, "0 100!", "person0 person1 [G: person1 person0] "},
      {"made", &SourceCounts::execute, 2, "0 16.66666603088379 33.33333206176758 100!",
       "made0 made1 [G: made1 made0] "},
      {"linked", &SourceCounts::link, 1, "0 16.66666603088379 33.33333206176758 50 50 100!",
       "linked0 linked1 [G: linked1 linked0] "},
      {"saved", &SourceCounts::save, 0,
       "0 16.66666603088379 33.33333206176758 50 50 100 100 100 100!",
       "saved0 saved1 [G: saved1 saved0] "},
  };
  StoreBuilder(source.real()).container("other", "other", 3).person("p", {.first = "Ann"});
  for (const auto& row : rows) {
    const std::string name = row.container;
    StoreBuilder(source.real())
        .container(name, name, 3)
        .persons(name, 2)
        .group("G" + name, "G")
        .members("G" + name, {name + "1", name + "0"});
    const auto book = bookOf(name);
    const auto data = savedData(book);
    const auto before = watch.counts().failures;
    person("p")->setValue_forProperty(Object("unsaved " + name), kABFirstNameProperty);
    source.raiseOn(row.operation, row.passing);
    EXPECT_EQ(loaded(book, data), row.reports);
    source.raiseOn(nullptr);
    EXPECT_EQ(watch.counts().failures, before + 1) << name;
    EXPECT_EQ(watch.lastReason(),
              "a load was cut short, the book is as it was: something that is no exception was "
              "thrown");
    EXPECT_EQ(ABAddressBook::sharedAddressBook()->unsavedChanges().values.size(), 1U) << name;
    EXPECT_EQ(contentOf(*book), row.content);
    bookOf("other")->save();
    EXPECT_EQ(contentOf(*bookOf(name)), row.content) << "after the save of another book";
    EXPECT_EQ(seenElsewhere(name), row.content);
    EXPECT_EQ(seenElsewhere("other"), "unsaved " + name + ' ');
  }
}

// From its callback and from another thread: neither is the load's.
TEST(BulkLoad, IsNeitherSavedNorRevertedByAnybodyMeanwhile) {
  StoreBuilder().container("A", "A", 3).persons("a", 1).group("g", "G").member("g", "a0");
  StoreBuilder().container("other", "other", 3).person("p", {.first = "Ann"});
  const auto book = bookOf("A");
  const auto data = savedData(book);
  Reports run;
  std::string meanwhile;
  const auto meddle = [] {
    const auto records = ABAddressBook::sharedAddressBook();
    person("p")->setValue_forProperty(Object("saved"), kABFirstNameProperty);
    EXPECT_TRUE(records->save());
    person("p")->setValue_forProperty(Object("reverted"), kABFirstNameProperty);
    records->revert();
    EXPECT_FALSE(records->hasUnsavedChanges());
  };
  book->loadWithData_progressBlock(
      data, [report = run.loadCallback(), meddle, &meanwhile](double value, bool done) {
        meddle();
        std::thread(meddle).join();
        if (value == 100.0 && meanwhile.empty()) {
          meanwhile = seenElsewhere("A") + "| " + contentOf(*bookOf("A"));
        }
        report(value, done);
      });
  EXPECT_EQ(run.wait(), "0 25 50 50 100 100 100 100!");
  EXPECT_EQ(meanwhile, "a0 [G: a0] | a0 [G: a0] ");
  EXPECT_EQ(seenElsewhere("A"), "a0 [G: a0] ");
  EXPECT_NE(idsOf(bookOf("A")->allPersons()->snapshot()), "a0");
  EXPECT_EQ(seenElsewhere("other"), "saved ");
}

TEST(BulkLoad, WhoseSaveFailsLeavesTheBookAsItWas) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 1);
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  sqlite::Connection store(support::StoreEnvironment::instance().contactStore().string(),
                           sqlite::Connection::Mode::ReadWrite);
  store.execute(
      "CREATE TRIGGER keep BEFORE DELETE ON record BEGIN SELECT RAISE(ABORT,'kept'); END");
  EXPECT_EQ(loaded(book, data), "0 50 50 100 100 100!");
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
  EXPECT_EQ(contentOf(*book), "p0 ");
  EXPECT_EQ(store.queryInteger("SELECT count(*) FROM record"), 1);
  store.execute("DROP TRIGGER keep");
  book->save();
  EXPECT_EQ(contentOf(*bookOf("_local:ABAccount")), "p0 ");
  EXPECT_EQ(idsOf(book->allPersons()->snapshot()), "p0");
}

TEST(BulkLoad, WhoseRecordsCannotBeMadeOrLinkedEndsAllTheSame) {
  const failures::Watch watch;
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).persons("p", 1).group("g", "G").member("g", "p0");
  const auto data = savedData(bookNamed("_local"));
  const auto nowhere = bookOf("Nowhere:ABAccount");
  EXPECT_EQ(loaded(nowhere, data), "0 25 50 50 100 100 100 100!");
  EXPECT_EQ(contentOf(*nowhere), "");
  EXPECT_EQ(watch.counts().refusals, 2U) << "the group and the person";
  source.refuseLinkEdits();
  EXPECT_EQ(loaded(bookNamed("_local"), data), "0 25 50 50 100 100 100 100!");
  EXPECT_EQ(contentOf(*bookOf("_local:ABAccount")), "p0 [G:] ");
}

TEST(BulkSave, ThatIsCutShortEndsWithoutData) {
  const failures::Watch watch;
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).persons("p", 3);
  Reports run;
  source.raiseOn(&SourceCounts::imageData, 1);
  bookNamed("_local")->saveDataBlock(run.saveCallback());
  EXPECT_EQ(run.wait(), "0 100!");
  EXPECT_EQ(watch.lastReason(), "a save was cut short: something that is no exception was thrown");
}

// A query that fails is an empty one.
TEST(BulkSave, OfAStoreThatFailsHoldsWhatIsGivenAndCountsTheRest) {
  const failures::Watch watch;
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).persons("p", 2).group("g", "G").member("g", "p0");
  const auto book = bookOf("_local:ABAccount");
  Reports run;
  source.denyContainerAccess();
  book->saveDataBlock(run.saveCallback());
  EXPECT_EQ(run.wait(), "0 100 100 data!");
  source.denyContainerAccess(false);
  EXPECT_EQ(watch.counts().failures, 2U) << "the book of the group, and the persons";
  EXPECT_EQ(watch.lastReason(), "access to the containers is denied");
  const auto general = OxAddressBookGeneral::addressBookWithData(run.data());
  EXPECT_EQ(general->personsDic().count(), 0U);
  EXPECT_EQ(general->groupsDic().count(), 1U);
}

TEST(BulkRuns, ThatCannotBeStartedSaySoAtOnce) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 1);
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  {
    const NoMoreThreads none;
    EXPECT_EQ(loaded(book, data), "0!");
    EXPECT_EQ(watch.counts().failures, 1U);
    EXPECT_TRUE(watch.lastReason().starts_with("a load could not be started: "));
    Reports run;
    book->saveDataBlock(run.saveCallback());
    EXPECT_EQ(run.wait(), "100!");
    EXPECT_EQ(run.worker(), std::this_thread::get_id());
    EXPECT_EQ(watch.counts().failures, 2U);
    EXPECT_TRUE(watch.lastReason().starts_with("a save could not be started: "));
  }
  EXPECT_EQ(cachedIn(*book), "p0");
  EXPECT_EQ(loaded(book, data), "0 50 50 100 100 100!");
}

}  // namespace
}  // namespace ox::test
