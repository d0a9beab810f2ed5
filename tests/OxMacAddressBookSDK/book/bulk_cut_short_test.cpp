#include <gtest/gtest.h>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/store_source.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/no_more_threads.hpp"

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

TEST(BulkLoad, ThatIsCutShortKeepsTheOldRecords) {
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
       "made0 made1  [G: made1 made0] [:] "},
      {"linked", &SourceCounts::link, 1, "0 16.66666603088379 33.33333206176758 50 50 100!",
       "linked0 linked1   [G: linked1 linked0] [:] "},
  };
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
    source.raiseOn(row.operation, row.passing);
    EXPECT_EQ(loaded(book, data), row.reports);
    source.raiseOn(nullptr);
    EXPECT_EQ(watch.counts().failures, before + 1) << name;
    EXPECT_EQ(watch.lastReason(),
              "a load was cut short, the old records are kept and empty new ones stand beside "
              "them: something that is no exception was thrown");
    EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges()) << name;
    EXPECT_EQ(contentOf(*book), row.content);
    bookOf("_local:ABAccount")->save();
    EXPECT_EQ(contentOf(*bookOf(name)), row.content) << "after the save of another book";
  }
}

// As a load of another book does that is cut short.
TEST(BulkLoad, ThatSomebodyRevertsIsCutShort) {
  const failures::Watch watch;
  struct Row {
    const char* container;
    int revertedAt;
    const char* reports;
    const char* content;
    const char* reason;
  };
  const std::vector<Row> rows = {
      {"made", 2, "0 25 50 50 100 100 100 100!", "made0  [G: made0] [:] ",
       "a load was cut short, the old records are kept and empty new ones stand beside them: "
       "somebody reverted the unsaved changes meanwhile"},
      {"done", 7, "0 25 50 50 100 100 100 100!", "done0  [G: done0] [:] ",
       "a load was cut short, the old records are kept and empty new ones stand beside them: "
       "somebody reverted the unsaved changes meanwhile"},
  };
  for (const auto& row : rows) {
    const std::string name = row.container;
    StoreBuilder()
        .container(name, name, 3)
        .persons(name, 1)
        .group("G" + name, "G")
        .member("G" + name, name + "0");
    const auto book = bookOf(name);
    const auto data = savedData(book);
    const auto before = watch.counts().failures;
    Reports run;
    book->loadWithData_progressBlock(
        data, [report = run.loadCallback(), left = std::make_shared<int>(row.revertedAt)](
                  double value, bool done) {
          if (--*left == 0) ABAddressBook::sharedAddressBook()->revert();
          report(value, done);
        });
    EXPECT_EQ(run.wait(), row.reports);
    EXPECT_EQ(watch.counts().failures, before + 1) << name;
    EXPECT_EQ(watch.lastReason(), row.reason);
    EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges()) << name;
    EXPECT_EQ(contentOf(*book), row.content);
    book->save();
    EXPECT_EQ(contentOf(*bookOf(name)), row.content);
  }
}

// Another thread's revert comes right before the save.
class RevertedBeforeSaving final : public SwitchedSource {
 public:
  using SwitchedSource::SwitchedSource;
  SaveReport save() override {
    ABAddressBook::sharedAddressBook()->revert();
    return SwitchedSource::save();
  }
};

TEST(BulkLoad, ThatSomebodyRevertsAsItSavesIsCutShort) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 1);
  const auto data = savedData(bookNamed("_local"));
  installContactSource(std::make_shared<RevertedBeforeSaving>(
      openStoreSource(support::StoreEnvironment::instance().contactStore().string())));
  const auto book = bookOf("_local:ABAccount");
  EXPECT_EQ(loaded(book, data), "0 50 50 100 100 100!");
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(watch.lastReason(),
            "the save of a load was cut short: somebody reverted the unsaved changes meanwhile");
  EXPECT_EQ(contentOf(*book), "p0  ") << "and an empty one beside it";
}

TEST(BulkLoad, WhoseSaveFailsIsCompletedByTheNextSave) {
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
  EXPECT_TRUE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
  EXPECT_EQ(contentOf(*bookOf("_local:ABAccount")), "p0 ") << "as this process sees it";
  EXPECT_EQ(store.queryInteger("SELECT count(*) FROM record"), 2);
  store.execute("DROP TRIGGER keep");
  book->save();
  EXPECT_EQ(store.queryInteger("SELECT count(*) FROM record"), 1);
  EXPECT_EQ(contentOf(*bookOf("_local:ABAccount")), "p0 ");
}

TEST(BulkLoad, WhoseSaveIsCutShortStaysUnsaved) {
  const failures::Watch watch;
  auto& source = SwitchedSource::install();
  StoreBuilder(source.real()).persons("p", 1);
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  source.raiseOn(&SourceCounts::save);
  EXPECT_EQ(loaded(book, data), "0 50 50 100 100 100!");
  source.raiseOn(nullptr);
  EXPECT_EQ(watch.lastReason(),
            "the save of a load was cut short: something that is no exception was thrown");
  EXPECT_TRUE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
  book->save();
  EXPECT_EQ(contentOf(*bookOf("_local:ABAccount")), "p0 ");
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
