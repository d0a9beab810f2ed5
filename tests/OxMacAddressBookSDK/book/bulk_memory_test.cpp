#include <gtest/gtest.h>

#include "base/failures.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"
#include "tests/support/allocation_limit.hpp"

namespace ox::test {
namespace {

constexpr std::size_t kLarge = std::size_t{1} << 20;

TEST(BulkLoad, ThatHasNoMemoryToReadItsDataTouchesNothing) {
  StoreBuilder().person("p", {.note = std::string(kLarge, 'n')}).group("g", "G");
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  support::refuseAllocationsFrom(kLarge);
  const auto reports = loaded(book, data);
  support::allowAllAllocations();
  EXPECT_EQ(reports, "0!");
  const auto after = failures::snapshot();
  EXPECT_EQ(after.failures, 1U);
  EXPECT_EQ(after.lastReason, "a load was cut short before it changed anything: std::bad_alloc");
  EXPECT_EQ(cachedIn(*book), "p");
  EXPECT_EQ(idsOf(book->allGroups()), "g");
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
}

TEST(BulkSave, ThatHasNoMemoryForItsDataEndsWithoutAny) {
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
  EXPECT_EQ(failures::snapshot().failures, 1U);
  EXPECT_EQ(failures::snapshot().lastReason, "a save was cut short: std::bad_alloc");
}

}  // namespace
}  // namespace ox::test
