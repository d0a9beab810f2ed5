#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::BookReport;
using sync::SyncCounts;
using Lines = std::vector<std::string>;

sync::SyncOptions confirmed() {
  sync::SyncOptions options;
  options.confirm = [](const BookReport&) { return true; };
  return options;
}

TEST(FirstMeeting, OfAFilledBookAndAnEmptyContainerAsksNobody) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  elsewhere.put("a.vcf", cardText("a", "A", "X"));
  EXPECT_EQ(book.runClean().down, (SyncCounts{1, 0, 0}));
}

TEST(FirstMeeting, OfAFilledContainerAndAnEmptyBookAsksNobody) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  book.addPerson("A", "X");
  EXPECT_EQ(book.runClean().up, (SyncCounts{1, 0, 0}));
}

TEST(FirstMeeting, OfTwoFilledSidesChangesNothingUnasked) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  book.addPerson("A", "X");
  elsewhere.put("b.vcf", cardText("b", "B", "X"));
  const auto before = containerSource().moment();
  const auto report = book.run();
  EXPECT_EQ(report.state, BookReport::State::NeedsConfirmation);
  EXPECT_EQ(report.down, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(report.up, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(report.plan.size(), 2U);
  EXPECT_EQ(containerSource().moment(), before);
  EXPECT_EQ(elsewhere.cards().size(), 1U);
  const auto done = book.run(confirmed());
  EXPECT_EQ(done.state, BookReport::State::InStep);
  EXPECT_EQ(done.down, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(done.up, (SyncCounts{1, 0, 0}));
}

TEST(FirstMeeting, TakesACardOfTheSameUidForTheSamePerson) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  const auto ann = book.addPerson("Ann", "Lee", {"1"});
  book.set(ann, property_id::kCardUid, "ann");
  elsewhere.put("x.vcf", cardText("urn:uuid:ann", "Ann", "Lee", {"TEL;TYPE=CELL:2", "NOTE:n"}));
  const auto report = book.run(confirmed());
  EXPECT_EQ(report.state, BookReport::State::InStep);
  EXPECT_EQ(report.conflicts, 0U);
  EXPECT_EQ(book.onlyPerson(), ann);
  const auto phones = book.phones(ann);
  EXPECT_EQ(std::set<std::string>(phones.begin(), phones.end()), (std::set<std::string>{"1", "2"}));
  EXPECT_EQ(book.text(ann, property_id::kNote), "n");
  EXPECT_EQ(elsewhere.cards().size(), 1U);
  EXPECT_NE(elsewhere.text("x.vcf").find(":1\r\n"), std::string::npos) << elsewhere.text("x.vcf");
}

TEST(FirstMeeting, TakesACardOfTheSameContentForTheSamePerson) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  const auto ann = book.addPerson("Ann", "Lee", {"1"});
  elsewhere.put("x.vcf", cardText("another", "Ann", "Lee", {"TEL;TYPE=CELL:1"}));
  const auto report = book.run(confirmed());
  EXPECT_EQ(report.down, SyncCounts());
  EXPECT_EQ(report.up, SyncCounts());
  EXPECT_EQ(book.onlyPerson(), ann);
  EXPECT_EQ(elsewhere.log, (Lines{"LIST", "FETCH 1"}));
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

TEST(FirstMeeting, KeepsBothOfAValueInWhichTheyDiffer) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  const auto ann = book.addPerson("Ann", "Lee");
  book.set(ann, property_id::kCardUid, "ann");
  book.set(ann, property_id::kNote, "ours");
  elsewhere.put("x.vcf", cardText("ann", "Ann", "Lee", {"NOTE:theirs"}));
  EXPECT_EQ(book.run(confirmed()).conflicts, 1U);
  EXPECT_EQ(book.text(ann, property_id::kNote), "theirs");
  EXPECT_EQ(sync::openConflicts().at(0).ours, "ours");
}

}  // namespace
}  // namespace ox::test
