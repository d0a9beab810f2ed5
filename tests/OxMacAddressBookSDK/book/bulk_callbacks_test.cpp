#include <gtest/gtest.h>
#include <thread>

#include "ox/base/failures.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

// Holds a worker in its first report until it is let go; the callback's copies share it.
class Gate {
 public:
  // For the worker: reports come no further until open() was called.
  void pass() const {
    std::unique_lock lock(state_->mutex);
    ++state_->reports;
    state_->changed.notify_all();
    state_->changed.wait(lock, [this] { return state_->open; });
  }
  void waitForTheWorker() const {
    std::unique_lock lock(state_->mutex);
    state_->changed.wait(lock, [this] { return state_->reports > 0; });
  }
  void open() const {
    const std::lock_guard lock(state_->mutex);
    state_->open = true;
    state_->changed.notify_all();
  }
  int reports() const {
    const std::lock_guard lock(state_->mutex);
    return state_->reports;
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable changed;
    int reports = 0;
    bool open = false;
  };
  std::shared_ptr<State> state_ = std::make_shared<State>();
};

// A book that nothing but the result and running workers hold.
std::shared_ptr<OxMacAddressBook> bookOfItsOwn() {
  return OxMacAddressBook::initWithContainer(containerOf("_local:ABAccount", "On My Mac", 1));
}

// Without callback there is no report to wait for: a worker's end shows when it lets go of the
// book.
void waitForWorkers(const std::shared_ptr<OxMacAddressBook>& book) {
  while (book.use_count() > 1) std::this_thread::yield();
}

std::string storedNames() {
  std::string names;
  for (const auto& record : ABAddressBook::sharedAddressBook()->people()) {
    names += *hostPerson(record)->displayName() + ' ';
  }
  return names;
}

TEST(BulkCallbacks, OfTheLaterSaveGetsTheReportsOfBoth) {
  StoreBuilder().persons("p", 4);
  const auto book = bookNamed("_local");
  const Gate gate;
  Reports later;
  book->saveDataBlock([gate](bool, const Data&, double) { gate.pass(); });
  gate.waitForTheWorker();
  book->saveDataBlock(later.saveCallback());
  EXPECT_EQ(later.wait(), "0 25 50 75 100 100 data!");
  const auto data = later.data();
  gate.open();
  EXPECT_EQ(later.wait(), "25 50 75 100 100 data!") << "the rest of the first save";
  EXPECT_EQ(*later.data(), *data);
  EXPECT_EQ(gate.reports(), 1);
}

TEST(BulkCallbacks, OfTheLaterLoadGetsTheReportsOfBoth) {
  StoreBuilder().persons("p", 1).group("g", "G").member("g", "p0");
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  const Gate gate;
  Reports later;
  book->loadWithData_progressBlock(data, [gate](double, bool) { gate.pass(); });
  gate.waitForTheWorker();
  book->loadWithData_progressBlock(data, later.loadCallback());
  EXPECT_EQ(later.wait(), "0 25 50 50 100 100 100 100!");
  gate.open();
  EXPECT_EQ(later.wait(), "25 50 50 100 100 100 100!") << "the rest of the first load";
  EXPECT_EQ(gate.reports(), 1);
  EXPECT_EQ(storedNames(), "p0 ") << "the second of the two replaced what the first had made";
}

TEST(BulkCallbacks, OfALoadAndOfASaveDoNotReplaceEachOther) {
  StoreBuilder().persons("p", 2);
  const auto book = bookNamed("_local");
  const auto data = savedData(book);
  const Gate gate;
  Reports load;
  Reports save;
  book->loadWithData_progressBlock(
      data, [gate, report = load.loadCallback()](double value, bool finished) {
        gate.pass();
        report(value, finished);
      });
  gate.waitForTheWorker();
  book->saveDataBlock(save.saveCallback());
  EXPECT_EQ(save.wait(), "0 50 100 100 data!");
  gate.open();
  EXPECT_EQ(load.wait(), "0 25 50 50 100 100 100!");
  EXPECT_EQ(save.text(), "");
}

TEST(BulkCallbacks, ThatAreAbsentAreSkipped) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 2);
  const auto data = savedData(bookNamed("_local"));
  StoreBuilder().persons("later", 1);
  const auto book = bookOfItsOwn();
  book->loadWithData_progressBlock(data, nullptr);
  waitForWorkers(book);
  EXPECT_EQ(storedNames(), "p0 p1 ");
  EXPECT_FALSE(ABAddressBook::sharedAddressBook()->hasUnsavedChanges());
  book->loadWithData_progressBlock(nullptr, nullptr);
  waitForWorkers(book);
  EXPECT_EQ(storedNames(), "p0 p1 ");
  book->saveDataBlock(nullptr);
  waitForWorkers(book);
  EXPECT_EQ(watch.counts(), failures::Counts());
}

// Its end starts another save and another load of the book.
class StartsAnother {
 public:
  StartsAnother(OxMacAddressBook& book, Data data, Reports save, Reports load)
      : book_(book), data_(std::move(data)), save_(std::move(save)), load_(std::move(load)) {}
  StartsAnother(const StartsAnother&) = delete;
  StartsAnother& operator=(const StartsAnother&) = delete;
  ~StartsAnother() {
    book_.saveDataBlock(save_.saveCallback());
    book_.loadWithData_progressBlock(data_, load_.loadCallback());
  }

 private:
  OxMacAddressBook& book_;
  Data data_;
  Reports save_;
  Reports load_;
};

TEST(BulkCallbacks, MayStartAnotherWhenTheyGo) {
  StoreBuilder().persons("p", 1);
  const auto book = bookOfItsOwn();
  const auto data = savedData(book);
  for (const bool loads : {false, true}) {
    waitForWorkers(book);
    Reports save;
    Reports load;
    // Each request takes the last owner away from the one before it.
    const auto request = [&](const std::shared_ptr<StartsAnother>& held) {
      if (loads) {
        book->loadWithData_progressBlock(data, [held](double, bool) {});
      } else {
        book->saveDataBlock([held](bool, const Data&, double) {});
      }
    };
    request(std::make_shared<StartsAnother>(*book, data, save, load));
    waitForWorkers(book);
    request(nullptr);
    // What the last request started may report to the same callback after the other's end.
    waitForWorkers(book);
    EXPECT_TRUE(save.wait().ends_with("!")) << loads;
    EXPECT_TRUE(load.wait().ends_with("!")) << loads;
  }
  waitForWorkers(book);
}

TEST(BulkCallbacks, KeepTheirStateFromCallToCall) {
  StoreBuilder().persons("p", 2);
  const auto book = bookNamed("_local");
  Reports run;
  book->saveDataBlock(
      [report = run.saveCallback(), calls = 0](bool finished, const Data&, double) mutable {
        report(finished, nullptr, ++calls);
      });
  EXPECT_EQ(run.wait(), "1 2 3 4!");
  book->loadWithData_progressBlock(
      savedData(book), [report = run.loadCallback(), calls = 0](double, bool finished) mutable {
        report(++calls, finished);
      });
  EXPECT_EQ(run.wait(), "1 2 3 4 5 6 7!");
}

TEST(BulkCallbacks, MayBeFollowedByNone) {
  const failures::Watch watch;
  StoreBuilder().persons("p", 2);
  const auto book = bookOfItsOwn();
  const Gate gate;
  book->saveDataBlock([gate](bool, const Data&, double) { gate.pass(); });
  gate.waitForTheWorker();
  book->saveDataBlock(nullptr);
  gate.open();
  waitForWorkers(book);
  EXPECT_EQ(gate.reports(), 1);
  EXPECT_EQ(watch.counts(), failures::Counts());
}

}  // namespace
}  // namespace ox::test
