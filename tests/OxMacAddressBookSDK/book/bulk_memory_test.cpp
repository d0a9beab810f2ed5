#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "ox/transfer/exporter.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/allocation_limit.hpp"

namespace ox::test {
namespace {

constexpr std::size_t kLarge = std::size_t{1} << 20;

TEST(BulkLoad, ThatHasNoMemoryToReadItsDataTouchesNothing) {
  const failures::Watch watch;
  StoreBuilder().person("p", {.note = std::string(kLarge, 'n')}).group("g", "G");
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  support::refuseAllocationsFrom(kLarge);
  const auto reports = loaded(book, data);
  support::allowAllAllocations();
  EXPECT_EQ(reports, "0!");
  EXPECT_EQ(watch.counts(), (failures::Counts{0, 1}));
  EXPECT_EQ(watch.last(),
            (Failure{FailureKind::NoMemory,
                     "a load was cut short before it changed anything: std::bad_alloc", ""}));
  EXPECT_EQ(cachedIn(*book), "p");
  EXPECT_EQ(idsOf(book->allGroups()), "g");
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(BulkSave, ThatHasNoMemoryForItsDataEndsWithoutAny) {
  const failures::Watch watch;
  for (const auto* identifier : {"p", "q", "r"}) {
    StoreBuilder().person(identifier, {.note = std::string(kLarge / 2, 'n')});
  }
  Reports run;
  const auto book = bookNamed("_local");
  support::refuseAllocationsFrom(kLarge);
  book->saveDataBlock(run.saveCallback());
  const auto reports = run.wait();
  support::allowAllAllocations();
  EXPECT_EQ(reports, "0 33.33333206176758 66.66666412353516 100 100!");
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(watch.lastReason(), "a save was cut short: std::bad_alloc");
}

// Every copy of the callbacks takes a large allocation.
TEST(BulkCallbacks, ThatCannotBeCopiedGetTheirLastReport) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 1);
  const auto book = bookNamed("_local");
  const std::string large(kLarge, 'c');
  Reports run;
  const SaveCallback save = [report = run.saveCallback(), large](bool finished, const Data& data,
                                                                 double value) {
    support::refuseAllocationsFrom(kLarge);
    report(finished, data, value);
  };
  const ProgressCallback load = [report = run.loadCallback(), large](double value, bool finished) {
    support::refuseAllocationsFrom(kLarge);
    report(value, finished);
  };
  book->saveDataBlock(save);
  EXPECT_EQ(run.wait(), "0 100 100 data!");
  support::allowAllAllocations();
  book->loadWithData_progressBlock(run.data(), load);
  EXPECT_EQ(run.wait(), "0 50 50 100 100 100!");
  EXPECT_EQ(watch.counts(), failures::Counts());
  // And where they cannot be kept either.
  book->saveDataBlock(save);
  EXPECT_EQ(run.wait(), "100!");
  EXPECT_EQ(watch.lastReason(), "a save could not be started: std::bad_alloc");
  book->loadWithData_progressBlock(run.data(), load);
  EXPECT_EQ(run.wait(), "0!");
  EXPECT_EQ(watch.lastReason(), "a load could not be started: std::bad_alloc");
  support::allowAllAllocations();
  EXPECT_EQ(watch.counts().failures, 2U);
}

// One allocation holds the text of all cards that are written at once.
TEST(Export, OfLargeRecordsTakesTheRoomOfAFew) {
  for (int i = 0; i < 40; ++i) {
    StoreBuilder().person("p" + std::to_string(i), {.note = std::string(kLarge, 'n')});
  }
  std::size_t bytes = 0;
  const auto keys = contactSource().records(RecordKind::Person);
  support::refuseAllocationsFrom(8 * kLarge);
  const auto report =
      vcard::exportCards(keys, {}, vcard::CardVersion::V30, [&](std::string_view card) {
        bytes += card.size();
        return true;
      });
  support::allowAllAllocations();
  EXPECT_EQ(report.persons, 40U);
  EXPECT_GT(bytes, 40 * kLarge);
}

}  // namespace
}  // namespace ox::test
