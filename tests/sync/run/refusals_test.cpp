#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::BookReport;
using sync::Push;
using sync::Pushed;
using sync::SyncCounts;
using Lines = std::vector<std::string>;

class BookThatRefuses : public testing::Test {
 protected:
  BookThatRefuses() {
    elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee"));
    book.runClean();
    elsewhere.log.clear();
  }

  void refuseAll(Pushed::Outcome outcome, const std::string& reason) {
    elsewhere.refuse = [=](const Push& push) {
      Pushed pushed;
      pushed.outcome = outcome;
      pushed.href = push.href;
      pushed.code = 403;
      pushed.reason = reason;
      return std::optional(pushed);
    };
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_F(BookThatRefuses, ACardIsAskedOnceUntilTheCardChanges) {
  refuseAll(Pushed::Outcome::Refused, "no pictures, please");
  const auto ann = book.onlyPerson();
  book.set(ann, property_id::kNote, "ours");
  const auto report = book.run();
  EXPECT_EQ(report.state, BookReport::State::InStep);
  ASSERT_EQ(report.refused.size(), 1U);
  EXPECT_EQ(report.refused[0].name, "Ann Lee");
  EXPECT_EQ(report.refused[0].code, 403);
  EXPECT_EQ(report.refused[0].reason, "no pictures, please");
  EXPECT_EQ(book.text(ann, property_id::kNote), "ours");
  elsewhere.log.clear();
  book.run();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  elsewhere.refuse = nullptr;
  book.run();
  EXPECT_EQ(elsewhere.text("ann.vcf").find("NOTE"), std::string::npos);
  book.set(ann, property_id::kNote, "another");
  book.runClean();
  EXPECT_NE(elsewhere.text("ann.vcf").find("NOTE:another"), std::string::npos);
}

TEST_F(BookThatRefuses, ANewCardIsAskedOnceUntilTheCardChanges) {
  refuseAll(Pushed::Outcome::Refused, "no");
  const auto bob = book.addPerson("Bob");
  EXPECT_EQ(book.run().refused.size(), 1U);
  elsewhere.refuse = nullptr;
  elsewhere.log.clear();
  book.run();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  book.set(bob, property_id::kNote, "another");
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 2U);
}

TEST_F(BookThatRefuses, OneCardOfManySendsTheOthers) {
  elsewhere.refuse = [](const Push& push) {
    std::optional<Pushed> refused;
    if (push.text().find("FN:Bad") != std::string::npos) {
      refused.emplace();
      refused->outcome = Pushed::Outcome::Refused;
      refused->reason = "bad";
    }
    return refused;
  };
  book.addPerson("Bad");
  book.addPerson("Good");
  const auto report = book.run();
  EXPECT_EQ(report.up, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(report.refused.size(), 1U);
  EXPECT_EQ(elsewhere.cards().size(), 2U);
}

TEST_F(BookThatRefuses, EverythingIsReadOnlyFromThenOn) {
  refuseAll(Pushed::Outcome::ReadOnly, "");
  const auto ann = book.onlyPerson();
  book.set(ann, property_id::kNote, "ours");
  const auto report = book.run();
  ASSERT_EQ(report.refused.size(), 1U);
  EXPECT_EQ(report.refused[0].reason, "the book takes no changes");
  EXPECT_TRUE(syncSource().syncBooks().front().isReadOnly());
  elsewhere.log.clear();
  elsewhere.put("ann.vcf", cardText("ann", "Anna", "Lee"));
  book.run();
  EXPECT_EQ(elsewhere.log, (Lines{"LIST", "FETCH 1"}));
  EXPECT_EQ(book.text(ann, property_id::kFirst), "Anna");
  EXPECT_EQ(book.text(ann, property_id::kNote), "ours");
}

TEST_F(BookThatRefuses, WhatIsTooLargeIsNotSent) {
  elsewhere.bookFacts.mostBytes = 2000;
  SyncedBook small(elsewhere, "Small");
  small.runClean();
  const auto ann = small.onlyPerson();
  elsewhere.log.clear();
  small.setPhoto(ann, std::string(5000, 'x'));
  const auto report = small.run();
  ASSERT_EQ(report.refused.size(), 1U);
  EXPECT_EQ(report.refused[0].reason, "larger than the 2000 bytes that the server takes");
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(small.photo(ann), std::string(5000, 'x'));
}

TEST_F(BookThatRefuses, ACardThatNobodyCanReadIsLeftAloneAndKeepsNoOther) {
  elsewhere.put("bad.vcf", "this is no card");
  elsewhere.put("good.vcf", cardText("good", "Good", "One"));
  const auto report = book.run();
  EXPECT_EQ(report.down, (SyncCounts{1, 0, 0}));
  ASSERT_EQ(report.refused.size(), 1U);
  EXPECT_EQ(report.refused[0].href, "bad.vcf");
  elsewhere.log.clear();
  book.run();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(elsewhere.text("bad.vcf"), "this is no card");
  elsewhere.put("bad.vcf", cardText("bad", "Better", "Now"));
  EXPECT_EQ(book.runClean().down, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(book.persons().size(), 3U);
}

TEST_F(BookThatRefuses, ACardThatBecomesUnreadableKeepsItsPerson) {
  const auto ann = book.onlyPerson();
  elsewhere.put("ann.vcf", "broken");
  EXPECT_EQ(book.run().refused.size(), 1U);
  EXPECT_EQ(book.onlyPerson(), ann);
  elsewhere.log.clear();
  book.set(ann, property_id::kNote, "ours");
  book.run();
  EXPECT_EQ(elsewhere.text("ann.vcf"), "broken");
  elsewhere.put("ann.vcf", cardText("ann", "Anna", "Lee"));
  book.runClean();
  EXPECT_EQ(book.text(ann, property_id::kFirst), "Anna");
  EXPECT_NE(elsewhere.text("ann.vcf").find("NOTE:ours"), std::string::npos);
}

}  // namespace
}  // namespace ox::test
