// Cards that change their places, and records that change their cards.

#include <algorithm>
#include <gtest/gtest.h>

#include "ox/platform/journal/journal.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::BookReport;
using sync::SyncCounts;
using Lines = std::vector<std::string>;

// Ann and Bob are on both sides, and in a group of both.
class MovedCards : public testing::Test {
 protected:
  MovedCards() {
    elsewhere.put("a.vcf", cardText("ann", "Ann", "Lee"));
    elsewhere.put("b.vcf", cardText("bob", "Bob", "Ray"));
    elsewhere.put("g.vcf", groupText("grp", "All", {"ann", "bob"}));
    book.runClean();
    ann = named("Ann");
    bob = named("Bob");
    elsewhere.log.clear();
  }

  RecordKey named(const std::string& first) const {
    for (const auto& key : book.persons()) {
      if (book.text(key, property_id::kFirst) == first) return key;
    }
    return {};
  }

  std::size_t members() const { return book.members(book.groups().at(0)).size(); }

  // Nothing more happens on either side.
  void expectQuiet() {
    elsewhere.log.clear();
    const auto before = containerSource().moment();
    book.run();
    EXPECT_EQ(elsewhere.log, Lines{"LIST"});
    EXPECT_EQ(containerSource().moment(), before);
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
  RecordKey ann;
  RecordKey bob;
};

TEST_F(MovedCards, StayTheirOwnWhenSwapped) {
  book.set(ann, property_id::kNote, "hello");
  const auto a = elsewhere.text("a.vcf");
  elsewhere.put("a.vcf", elsewhere.text("b.vcf"));
  elsewhere.put("b.vcf", a);
  book.runClean();
  EXPECT_EQ(book.text(ann, property_id::kFirst), "Ann");
  EXPECT_EQ(book.text(bob, property_id::kFirst), "Bob");
  EXPECT_EQ(book.text(bob, property_id::kNote), "");
  EXPECT_EQ(elsewhere.text("a.vcf").find("NOTE"), std::string::npos);
  EXPECT_NE(elsewhere.text("b.vcf").find("NOTE:hello"), std::string::npos);
  EXPECT_EQ(members(), 2U);
  expectQuiet();
}

TEST_F(MovedCards, TakeThePlaceOfOneThatIsGone) {
  elsewhere.put("a.vcf", elsewhere.text("b.vcf"));
  elsewhere.erase("b.vcf");
  book.runClean();
  EXPECT_EQ(book.persons(), std::vector<RecordKey>{bob});
  EXPECT_EQ(book.text(bob, property_id::kFirst), "Bob");
  EXPECT_EQ(members(), 1U);
  EXPECT_EQ(elsewhere.cards().size(), 2U);
  expectQuiet();
}

TEST_F(MovedCards, LeaveRoomForOneThatWasEditedHere) {
  book.set(ann, property_id::kNote, "ours");
  elsewhere.put("a.vcf", elsewhere.text("b.vcf"));
  elsewhere.erase("b.vcf");
  book.runClean();
  EXPECT_EQ(book.persons().size(), 2U);
  EXPECT_EQ(elsewhere.cards().size(), 3U);
  EXPECT_EQ(book.text(ann, property_id::kNote), "ours");
  EXPECT_EQ(elsewhere.text("a.vcf").find("NOTE"), std::string::npos);
  expectQuiet();
}

TEST_F(MovedCards, LeaveRoomForOneThatWasEditedHereAndMayNotBeSent) {
  book.set(ann, property_id::kNote, "ours");
  elsewhere.put("a.vcf", elsewhere.text("b.vcf"));
  elsewhere.erase("b.vcf");
  sync::SyncOptions pull;
  pull.pushes = false;
  EXPECT_EQ(book.run(pull).state, BookReport::State::InStep);
  EXPECT_EQ(book.persons().size(), 2U);
  EXPECT_EQ(elsewhere.cards().size(), 2U);
  EXPECT_EQ(book.text(ann, property_id::kNote), "ours");
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 3U);
  EXPECT_EQ(book.text(ann, property_id::kNote), "ours");
  expectQuiet();
}

TEST_F(MovedCards, AreDeletedWhereTheyAreNow) {
  elsewhere.put("n.vcf", elsewhere.text("b.vcf"));
  elsewhere.erase("b.vcf");
  book.remove(bob);
  EXPECT_EQ(book.runClean().up.deleted, 1U);
  EXPECT_FALSE(elsewhere.cards().contains("n.vcf"));
  EXPECT_EQ(syncSource().countSyncCards(book.container()), 2U);
  expectQuiet();
}

TEST_F(MovedCards, KeepTheirConflicts) {
  book.set(ann, property_id::kNote, "ours");
  elsewhere.put("a.vcf", cardText("ann", "Ann", "Lee", {"NOTE:theirs"}));
  EXPECT_EQ(book.run().conflicts, 1U);
  elsewhere.put("n.vcf", elsewhere.text("a.vcf"));
  elsewhere.erase("a.vcf");
  EXPECT_EQ(book.run().conflicts, 1U);
  EXPECT_EQ(sync::openConflicts().at(0).record, ann.text());
}

TEST_F(MovedCards, WithAConflictAreNotDeletedHere) {
  book.set(ann, property_id::kNote, "ours");
  elsewhere.put("a.vcf", cardText("ann", "Ann", "Lee", {"NOTE:theirs"}));
  book.run();
  elsewhere.erase("a.vcf");
  EXPECT_EQ(book.run().conflicts, 1U);
  EXPECT_EQ(book.persons().size(), 2U);
  EXPECT_EQ(elsewhere.cards().size(), 3U);
}

TEST_F(MovedCards, AreThoseOfARecordThatIsImportedAnew) {
  book.remove(ann);
  const auto again = book.addPerson("Ann", "Lee", {"7"});
  book.set(again, property_id::kCardUid, "ann");
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 2, 0}));
  EXPECT_NE(elsewhere.text("a.vcf").find(":7\r\n"), std::string::npos);
  EXPECT_EQ(elsewhere.cards().size(), 3U);
  expectQuiet();
}

TEST_F(MovedCards, GetAnotherNameWhereTheirsIsTaken) {
  elsewhere.put("cy.vcf", "no card");
  elsewhere.put("dan.vcf", cardText("other", "Other", "One"));
  book.run();
  for (const auto* name : {"cy", "dan"}) {
    book.set(book.addPerson(name), property_id::kCardUid, name);
  }
  EXPECT_EQ(book.run().up, (SyncCounts{2, 0, 0}));
  EXPECT_EQ(elsewhere.cards().size(), 7U);
  EXPECT_EQ(elsewhere.text("cy.vcf"), "no card");
  expectQuiet();
}

TEST_F(MovedCards, AreRecognisedInThePlaceOfAnUnreadableOne) {
  elsewhere.put("w.vcf", "no card");
  book.run();
  book.set(ann, property_id::kNote, "ours");
  elsewhere.put("w.vcf", elsewhere.text("a.vcf"));
  elsewhere.erase("a.vcf");
  book.runClean();
  EXPECT_EQ(book.persons().size(), 2U);
  EXPECT_NE(elsewhere.text("w.vcf").find("NOTE:ours"), std::string::npos);
  EXPECT_EQ(elsewhere.cards().size(), 3U);
}

TEST_F(MovedCards, ThatAreMissedOnceStayMembers) {
  const auto text = elsewhere.text("b.vcf");
  elsewhere.erase("b.vcf");
  book.runClean();
  EXPECT_EQ(members(), 1U);
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  elsewhere.put("b.vcf", text);
  book.runClean();
  EXPECT_EQ(members(), 2U);
  EXPECT_NE(elsewhere.text("g.vcf").find("bob"), std::string::npos);
  expectQuiet();
}

TEST_F(MovedCards, ThatComeBackAreMembersStill) {
  book.remove(bob);
  elsewhere.put("b.vcf", cardText("bob", "Bobby", "Ray"));
  book.runClean();
  EXPECT_EQ(members(), 2U);
  EXPECT_NE(elsewhere.text("g.vcf").find("bob"), std::string::npos);
  expectQuiet();
}

TEST_F(MovedCards, KeepAMemberWhoIsLinkedWhileTheRunGoesOn) {
  const auto cy = book.addPerson("Cy");
  book.runClean();
  const auto group = book.groups().at(0);
  auto text = elsewhere.text("g.vcf");
  text.insert(text.find("END:VCARD"), "NOTE:theirs\r\n");
  elsewhere.put("g.vcf", text);
  book.set(ann, property_id::kNote, "something to send");
  elsewhere.beforePush = [&](const sync::Push&) { book.link(group, cy); };
  book.runClean();
  EXPECT_EQ(members(), 3U);
  elsewhere.beforePush = nullptr;
  book.runClean();
  EXPECT_NE(elsewhere.text("g.vcf").find(cy.text().substr(0, 36)), std::string::npos);
}

TEST_F(MovedCards, KeepATagThatIsChangedWhileTheRunGoesOn) {
  elsewhere.put("a.vcf", cardText("ann", "Ann", "Lee", {"CATEGORIES:one"}));
  book.runClean();
  elsewhere.put("a.vcf", cardText("ann", "Ann", "Lee", {"CATEGORIES:one,two"}));
  book.set(bob, property_id::kNote, "something to send");
  elsewhere.beforePush = [&](const sync::Push&) { book.setTags(ann, {"mine"}); };
  book.runClean();
  EXPECT_EQ(book.tags(ann), (Lines{"mine", "two"}));
}

TEST_F(MovedCards, TellOfTheLastTagThatGoes) {
  book.setTags(ann, {"x"});
  book.runClean();
  book.setTags(ann, {});
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(elsewhere.text("a.vcf").find("CATEGORIES"), std::string::npos);
}

TEST_F(MovedCards, ThatWereDeletedThereAndTakenBackHereAreSentAgain) {
  elsewhere.requests = 0;
  book.remove(ann);
  elsewhere.breaksAfter = 2;  // the deletion arrives, the answer does not
  book.run();
  elsewhere.breaksAfter.reset();
  EXPECT_FALSE(elsewhere.cards().contains("a.vcf"));
  journal::undo();
  ASSERT_EQ(book.persons().size(), 2U);
  book.run();
  EXPECT_EQ(book.persons().size(), 2U);
  EXPECT_TRUE(elsewhere.cards().contains("a.vcf"));
  expectQuiet();
}

TEST_F(MovedCards, AreNotDeletedThereAsWhatNobodyCouldRead) {
  elsewhere.put("a.vcf", cardText("ann", "Ann", "Lee") + cardText("nina", "Nina", "Lee"));
  EXPECT_EQ(book.run().refused.size(), 1U);
  book.remove(ann);
  const auto report = book.run();
  EXPECT_EQ(report.up.deleted, 0U);
  EXPECT_TRUE(elsewhere.cards().contains("a.vcf"));
}

TEST_F(MovedCards, ThatNobodyCouldReadAndAreGoneAreSentAgainWhenEditedHere) {
  elsewhere.put("a.vcf", "no card");
  book.run();
  book.set(ann, property_id::kNote, "ours");
  elsewhere.erase("a.vcf");
  book.runClean();
  EXPECT_NE(elsewhere.text("a.vcf").find("NOTE:ours"), std::string::npos);
}

TEST(ResolvedConflict, OfAPersonWhoWasRemovedIsNotThrownAway) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee"));
  book.runClean();
  const auto ann = book.onlyPerson();
  book.set(ann, property_id::kNote, "ours");
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"NOTE:theirs"}));
  book.run();
  book.remove(ann);
  const auto id = sync::openConflicts().at(0).id;
  EXPECT_THROW(sync::resolveConflicts({id}, sync::Settled::Mine), sync::RemoteError);
  EXPECT_EQ(sync::openConflicts().size(), 1U);
  journal::undo();
  sync::resolveConflicts({id}, sync::Settled::Mine);
  EXPECT_EQ(book.text(ann, property_id::kNote), "ours");
}

TEST(GuardedBook, CountsNoUnreadableCardAmongItsContacts) {
  BookElsewhere elsewhere;
  SyncedBook book(elsewhere);
  for (const auto* name : {"a", "b", "c", "d"}) {
    elsewhere.put(std::string(name) + ".vcf", cardText(name, name, "X"));
  }
  elsewhere.put("junk.vcf", "no card");
  book.run();
  for (const auto& person : book.persons()) book.remove(person);
  EXPECT_EQ(book.run().state, BookReport::State::Guarded);
  EXPECT_EQ(elsewhere.cards().size(), 5U);
}

// To a token that it does not know a server may answer so.
class AnswerWithEverything : public testing::TestWithParam<int> {
 protected:
  AnswerWithEverything() {
    for (int i = 0; i < GetParam(); ++i) {
      const auto name = "p" + std::to_string(i);
      elsewhere.put(name + ".vcf", cardText(name, name, "X"));
    }
    book.runClean();
    elsewhere.erase("p2.vcf");
    elsewhere.forgetsTokens = true;
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_P(AnswerWithEverything, IsNotTakenForNewsAndDeletesNothingUnasked) {
  const auto report = book.run();
  EXPECT_EQ(report.state, BookReport::State::Guarded);
  EXPECT_EQ(report.failure, "it would delete 1 of " + std::to_string(GetParam()) +
                                " contacts here that are not there any more, though nothing there "
                                "says that they were deleted: it may have been put back to an old "
                                "copy");
  ASSERT_EQ(report.plan.size(), 1U);
  EXPECT_EQ(report.plan.front().name, "p2 X");
  sync::SyncOptions options;
  options.allowsDeletions = true;
  EXPECT_EQ(book.run(options).down, (SyncCounts{0, 0, 1}));
}

INSTANTIATE_TEST_SUITE_P(InSmallAndLargerBooks, AnswerWithEverything, testing::Values(3, 8, 30));

// A book that is put back to an old copy knows its token still, or another one.
class BookPutBack : public testing::Test {
 protected:
  BookPutBack() {
    for (const auto* name : {"ann", "bob", "cid", "dan", "eve"}) {
      elsewhere.put(std::string(name) + ".vcf", cardText(name, name, "X"));
    }
    book.runClean();
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_F(BookPutBack, DeletesNothingHereUnasked) {
  elsewhere.loses("eve.vcf");
  EXPECT_EQ(book.runClean().down, SyncCounts());  // nothing tells
  sync::SyncOptions all;
  all.listsAll = true;
  EXPECT_EQ(book.run(all).state, BookReport::State::Guarded);
  EXPECT_EQ(book.persons().size(), 5U);
}

TEST_F(BookPutBack, StillTellsWhatWasDeletedInIt) {
  elsewhere.erase("eve.vcf");
  sync::SyncOptions all;
  all.listsAll = true;
  const auto report = book.run(all);
  EXPECT_EQ(report.state, BookReport::State::InStep) << report.failure;
  EXPECT_EQ(report.down, (SyncCounts{0, 0, 1}));
}

}  // namespace
}  // namespace ox::test
