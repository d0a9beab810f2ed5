#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::BookReport;
using sync::openConflicts;
using sync::resolveConflicts;
using sync::Settled;

// Both sides have made another note of Ann's.
class NoteOfTwo : public testing::Test {
 protected:
  NoteOfTwo() {
    elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"NOTE:base"}));
    book.runClean();
    book.set(ann(), property_id::kNote, "ours");
    elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"NOTE:theirs"}));
    report = book.run();
  }

  RecordKey ann() const { return book.onlyPerson(); }
  std::string note() const { return book.text(ann(), property_id::kNote); }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
  BookReport report;
};

TEST_F(NoteOfTwo, IsTheirsAndKeepsOurs) {
  EXPECT_EQ(report.state, BookReport::State::InStep);
  EXPECT_EQ(report.conflicts, 1U);
  EXPECT_EQ(note(), "theirs");
  const auto open = openConflicts();
  ASSERT_EQ(open.size(), 1U);
  EXPECT_EQ(open[0].name, "Ann Lee");
  EXPECT_EQ(open[0].property, "note");
  EXPECT_EQ(open[0].theirs, "theirs");
  EXPECT_EQ(open[0].ours, "ours");
  EXPECT_EQ(open[0].record, ann().text());
  EXPECT_EQ(open[0].account, "Book");
}

TEST_F(NoteOfTwo, StaysOpenAndIsNotFoughtOver) {
  elsewhere.log.clear();
  EXPECT_EQ(book.run().conflicts, 1U);
  EXPECT_EQ(elsewhere.log, std::vector<std::string>{"LIST"});
  EXPECT_EQ(note(), "theirs");
}

TEST_F(NoteOfTwo, IsOursWhenTheUserSaysSo) {
  resolveConflicts({openConflicts()[0].id}, Settled::Mine);
  EXPECT_TRUE(openConflicts().empty());
  EXPECT_EQ(note(), "ours");
  book.runClean();
  EXPECT_NE(elsewhere.text("ann.vcf").find("NOTE:ours"), std::string::npos);
}

TEST_F(NoteOfTwo, StaysTheirsWhenTheUserSaysSo) {
  resolveConflicts({openConflicts()[0].id}, Settled::Theirs);
  EXPECT_TRUE(openConflicts().empty());
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(note(), "theirs");
  EXPECT_EQ(elsewhere.log, std::vector<std::string>{"LIST"});
}

TEST(SameEdit, OnBothSidesIsNoConflict) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee"));
  book.runClean();
  book.set(book.onlyPerson(), property_id::kNote, "same");
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"NOTE:same"}));
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, (std::vector<std::string>{"LIST", "FETCH 1"}));
}

}  // namespace
}  // namespace ox::test
