#include "ox/sync/run/steps/guard.hpp"

#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::BookReport;
using sync::isTooMuch;
using sync::SyncCounts;

TEST(Guard, LetsFewDeletionsPass) {
  EXPECT_FALSE(isTooMuch({0, 0}));
  EXPECT_FALSE(isTooMuch({2, 2}));
  EXPECT_FALSE(isTooMuch({10, 11}));
  EXPECT_FALSE(isTooMuch({11, 55}));
}

TEST(Guard, StopsManyAndAll) {
  EXPECT_TRUE(isTooMuch({3, 3}));
  EXPECT_TRUE(isTooMuch({11, 54}));
  EXPECT_TRUE(isTooMuch({1000, 1000}));
}

class BookOfThirty : public testing::Test {
 protected:
  BookOfThirty() {
    for (int i = 0; i < 30; ++i) {
      elsewhere.put(name(i) + ".vcf", cardText(name(i), name(i), "X"));
    }
    book.runClean();
    elsewhere.log.clear();
  }

  static std::string name(int i) { return "p" + std::to_string(i); }

  // Nothing was deleted, nothing was written, and the user is told.
  void expectGuarded(const BookReport& report, const std::string& why, std::size_t here,
                     std::size_t there) {
    EXPECT_EQ(report.state, BookReport::State::Guarded);
    EXPECT_EQ(report.failure, why);
    EXPECT_EQ(report.down.deleted, here);
    EXPECT_EQ(report.up.deleted, there);
    EXPECT_EQ(report.plan.size(), here + there);
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_F(BookOfThirty, KeepsItsContactsWhenTheServerIsEmptied) {
  for (int i = 0; i < 30; ++i) elsewhere.erase(name(i) + ".vcf");
  const auto before = containerSource().moment();
  expectGuarded(book.run(), "it would delete 30 of 30 contacts here", 30, 0);
  EXPECT_EQ(containerSource().moment(), before);
  sync::SyncOptions allowed;
  allowed.allowsDeletions = true;
  EXPECT_EQ(book.run(allowed).down, (SyncCounts{0, 0, 30}));
  EXPECT_TRUE(book.persons().empty());
}

TEST_F(BookOfThirty, KeepsTheServersWhenItsOwnAreGone) {
  for (const auto& person : book.persons()) book.remove(person);
  expectGuarded(book.run(), "it would delete 30 of 30 contacts there", 0, 30);
  EXPECT_EQ(elsewhere.cards().size(), 30U);
  EXPECT_EQ(elsewhere.log, std::vector<std::string>{"LIST"});
  sync::SyncOptions allowed;
  allowed.allowsDeletions = true;
  EXPECT_EQ(book.run(allowed).up, (SyncCounts{0, 0, 30}));
  EXPECT_TRUE(elsewhere.cards().empty());
}

TEST_F(BookOfThirty, KeepsItsContactsWhenManyAreGoneThere) {
  for (int i = 0; i < 11; ++i) elsewhere.erase(name(i) + ".vcf");
  expectGuarded(book.run(), "it would delete 11 of 30 contacts here", 11, 0);
  EXPECT_EQ(book.persons().size(), 30U);
}

TEST_F(BookOfThirty, BelievesNoListingThatIsSuddenlyEmpty) {
  elsewhere.givesTokens = false;
  elsewhere.listsNothing = true;
  expectGuarded(book.run(), "the book is empty there; it would delete 30 of 30 contacts here", 30,
                0);
  EXPECT_EQ(book.persons().size(), 30U);
  elsewhere.listsNothing = false;
  book.runClean();
  EXPECT_EQ(book.persons().size(), 30U);
}

TEST(SmallBook, IsNotEmptiedByAnEmptyListing) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  elsewhere.put("a.vcf", cardText("a", "A", "X"));
  elsewhere.givesTokens = false;
  book.runClean();
  elsewhere.listsNothing = true;
  EXPECT_EQ(book.run().state, BookReport::State::Guarded);
  EXPECT_EQ(book.persons().size(), 1U);
}

TEST(SmallBook, LosesItsOnlyCardWhenTheServerSaysSo) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  elsewhere.put("a.vcf", cardText("a", "A", "X"));
  book.runClean();
  elsewhere.erase("a.vcf");
  EXPECT_EQ(book.runClean().down, (SyncCounts{0, 0, 1}));
  EXPECT_TRUE(book.persons().empty());
}

}  // namespace
}  // namespace ox::test
