// A commit that fails. Whoever was told so makes the change anew, and must not find it made twice.
#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "tests/faults/disk_log.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/faults/trouble.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

// What the next process finds when this one is killed now: everything that was written, and no
// index of the log.
std::string stateAfterKillNow() {
  DiskReplay replay(FaultyDisk::shared().log());
  replay.advanceTo(FaultyDisk::shared().log().size());
  const auto folder = support::temporaryPath("killed");
  std::filesystem::remove_all(folder);
  std::filesystem::create_directory(folder);
  replay.writeInto(folder, Loss::Nothing, 1);
  return committedState((folder / "contacts.db").string());
}

// A disk fails once, at any change of a save.
TEST(FailedCommit, DoesNotComeBackWhenTheProcessIsKilled) {
  const failures::Watch watch;
  auto& disk = FaultyDisk::shared();
  disk.record(support::StoreEnvironment::instance().folder().string());
  support::StoreBuilder().person("ann", {.first = "Ann"});
  const auto book = ABAddressBook::sharedAddressBook();
  const auto ann = book->recordForUniqueId("ann");
  int failed = 0;
  for (std::uint64_t n = 1;; ++n) {
    SCOPED_TRACE("at change " + std::to_string(n));
    const auto before = committedState(storePath());
    ASSERT_TRUE(
        ann->setValue_forProperty(Object("Ann " + std::to_string(n)), kABFirstNameProperty));
    SaveReport report;
    const bool struck =
        Trouble{Fault::BrokenOnce, n}.during([&] { report = book->saveAndReturnError(); });
    if (!struck) break;
    if (report.done) continue;
    ++failed;
    EXPECT_EQ(stateAfterKillNow(), before);
    EXPECT_TRUE(book->save());
    EXPECT_EQ(stateAfterKillNow(), committedState(storePath()));
    EXPECT_EQ(problemsOf(storePath()), "");
  }
  EXPECT_GT(failed, 3);
}

}  // namespace
}  // namespace ox::faults
