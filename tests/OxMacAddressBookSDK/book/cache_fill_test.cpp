// What other threads do while a book's persons are fetched. The steps of the other thread are taken
// at the right moment by the store itself.
#include <functional>
#include <gtest/gtest.h>
#include <utility>

#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/platform/store/store_source.hpp"
#include "tests/OxMacAddressBookSDK/book/bulk_runs.hpp"
#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox::test {
namespace {

// Each step is taken once, at the next call of its operation.
class SteppingSource final : public SwitchedSource {
 public:
  using SwitchedSource::SwitchedSource;
  using Step = std::function<void()>;

  static SteppingSource& install() {
    auto source = std::make_shared<SteppingSource>(
        openStoreSource(support::StoreEnvironment::instance().contactStore().string()));
    installContactSource(source);
    return *source;
  }

  RecordKeys recordsIn(std::string_view container, RecordKind kind) override {
    take(beforeFetch);
    auto found = SwitchedSource::recordsIn(container, kind);
    take(afterFetch);
    return found;
  }

  bool execute(SaveRequest& request) override {
    const bool done = SwitchedSource::execute(request);
    take(afterCreation);
    return done;
  }

  Step beforeFetch;
  Step afterFetch;
  Step afterCreation;

 private:
  static void take(Step& step) {
    if (const auto next = std::exchange(step, nullptr)) next();
  }
};

class CacheFill : public testing::Test {
 protected:
  // The new person's ID.
  std::string newPersonOfTheBook() { return *book->newPerson()->ID(); }
  static std::size_t stored() { return ABAddressBook::sharedAddressBook()->people().size(); }

  SteppingSource& source = SteppingSource::install();
  StoreBuilder built =
      std::move(StoreBuilder().container("A:ABAccount", "iCloud", 3).persons("p", 2));
  std::shared_ptr<OxMacAddressBook> book =
      OxMacAddressBook::initWithContainer(containerOf("A:ABAccount", "iCloud", 3));
};

TEST_F(CacheFill, PutsWhatItFindsBeforeAPersonMadeMeanwhile) {
  std::string made;
  source.afterFetch = [&] { made = newPersonOfTheBook(); };
  book->allPersons();
  EXPECT_EQ(cachedIn(*book), "p0 p1 " + made) << "not among those that were fetched";
  book->allPersonArray()->clear();
  source.beforeFetch = [&] { made += ' ' + newPersonOfTheBook(); };
  book->allPersons();
  EXPECT_EQ(cachedIn(*book), "p0 p1 " + made) << "fetched, and in the cache";
}

TEST_F(CacheFill, IsNotFollowedByAPersonThatItFound) {
  source.afterCreation = [&] { book->allPersons(); };
  const auto made = newPersonOfTheBook();
  EXPECT_EQ(cachedIn(*book), "p0 p1 " + made);
}

TEST_F(CacheFill, IsTheFirstOfTwo) {
  source.afterFetch = [&] {
    book->allPersons();
    StoreBuilder().in("A:ABAccount").persons("late", 1);
  };
  book->allPersons();
  EXPECT_EQ(cachedIn(*book), "p0 p1");
}

TEST_F(CacheFill, StartsAnewWhenTheCacheIsEmptiedMeanwhile) {
  source.afterFetch = [&] {
    StoreBuilder().in("A:ABAccount").persons("late", 1);
    book->allPersonArray()->clear();
  };
  book->allPersons();
  EXPECT_EQ(cachedIn(*book), "p0 p1 late0");
}

TEST_F(CacheFill, OfALoadRemovesTheOldPersonsWhoeverIsMadeMeanwhile) {
  const auto empty = OxAddressBookGeneral::init()->saveToData();
  std::string made;
  source.beforeFetch = [&] { made = newPersonOfTheBook(); };
  loaded(book, empty);
  EXPECT_EQ(stored(), 0U);
  EXPECT_EQ(cachedIn(*book), "p0 p1 " + made);
  StoreBuilder().in("A:ABAccount").persons("q", 2);
  source.afterFetch = [&] { made = newPersonOfTheBook(); };
  loaded(book, empty);
  EXPECT_EQ(stored(), 1U) << "made after the old ones were found";
  EXPECT_EQ(cachedIn(*book), "q0 q1 " + made);
}

}  // namespace
}  // namespace ox::test
