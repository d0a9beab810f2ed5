// What a listing since a token leaves out, and what is made of that.

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::SyncCounts;
using Lines = std::vector<std::string>;

void put(BookElsewhere& elsewhere, int count) {
  for (int i = 0; i < count; ++i) {
    const auto name = "p" + std::to_string(i);
    elsewhere.put(name + ".vcf", cardText(name, name, "X"));
  }
}

// The book is then as it was at the token that this side still has, and nothing is told: it may
// have been put back to an old copy as well.
TEST(TokenFromBeforeTheSending, LosesNoDeletionOfWhatWasSent) {
  BookElsewhere elsewhere;
  elsewhere.marksByContent = true;
  SyncedBook book(elsewhere);
  put(elsewhere, 2);
  book.runClean();
  book.addPerson("Ann");
  book.runClean();
  ASSERT_EQ(elsewhere.cards().size(), 3U);
  for (const auto& [href, card] : std::map(elsewhere.cards())) {
    if (!href.starts_with("p")) elsewhere.erase(href);
  }
  EXPECT_EQ(book.run().state, sync::BookReport::State::Guarded);
  sync::SyncOptions options;
  options.allowsDeletions = true;
  EXPECT_EQ(book.run(options).down, (SyncCounts{0, 0, 1}));
  EXPECT_EQ(book.lines(), (Lines{"p0 X:", "p1 X:"}));
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

TEST(TokenFromBeforeTheSending, LosesNoEditThatTakesOursBack) {
  BookElsewhere elsewhere;
  elsewhere.marksByContent = true;
  SyncedBook book(elsewhere);
  put(elsewhere, 1);
  book.runClean();
  const auto before = elsewhere.onlyText();
  book.addPhone(book.onlyPerson(), "+47 1");
  book.runClean();
  ASSERT_NE(elsewhere.onlyText(), before);
  elsewhere.put("p0.vcf", before);
  EXPECT_EQ(book.runClean().down, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(book.lines(), Lines{"p0 X:"});
}

TEST(TokenFromBeforeTheSending, CostsNoListingMoreWhileNobodyChangesAnything) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  put(elsewhere, 3);
  book.runClean();
  book.addPerson("Ann");
  book.addPhone(book.persons()[1], "+47 1");
  book.remove(book.persons()[0]);
  book.runClean();
  const auto rows = syncSource().syncBooks();
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(syncSource().syncBooks(), rows);
}

// Else everything would be listed in each run.
TEST(TokenFromBeforeTheSending, IsLeftBehindWhereItBringsAWholeListing) {
  BookElsewhere elsewhere;
  elsewhere.listsAllOrNothing = true;
  SyncedBook book(elsewhere);
  put(elsewhere, 3);
  book.runClean();
  const auto tokenOf = [] { return syncSource().syncBooks().front().token; };
  const auto before = tokenOf();
  book.addPerson("Ann");
  book.runClean();
  EXPECT_EQ(tokenOf(), before);
  book.runClean();
  const auto after = tokenOf();
  EXPECT_NE(after, before);
  EXPECT_FALSE(elsewhere.list(after).isWhole);
  book.runClean();
  EXPECT_EQ(tokenOf(), after);
}

}  // namespace
}  // namespace ox::test
