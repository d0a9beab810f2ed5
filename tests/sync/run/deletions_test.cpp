#include <gtest/gtest.h>

#include "ox/platform/journal/journal.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::SyncCounts;
using Lines = std::vector<std::string>;

// Both sides know four persons.
class BookOfFour : public testing::Test {
 protected:
  BookOfFour() {
    for (const auto* name : {"a", "b", "c", "d"}) {
      elsewhere.put(std::string(name) + ".vcf", cardText(name, name, "X"));
    }
    book.runClean();
    elsewhere.log.clear();
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_F(BookOfFour, DeletesHereWhatWasDeletedThere) {
  elsewhere.erase("b.vcf");
  EXPECT_EQ(book.runClean().down, (SyncCounts{0, 0, 1}));
  EXPECT_EQ(book.lines(), (Lines{"a X:", "c X:", "d X:"}));
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

TEST_F(BookOfFour, DeletesThereWhatWasDeletedHere) {
  book.remove(book.persons()[1]);
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 0, 1}));
  EXPECT_EQ(elsewhere.log, (Lines{"LIST", "DELETE b.vcf"}));
  EXPECT_FALSE(elsewhere.cards().contains("b.vcf"));
  EXPECT_EQ(syncSource().countSyncCards(book.container()), 3U);
}

TEST_F(BookOfFour, ForgetsWhatBothHaveDeleted) {
  book.remove(book.persons()[1]);
  elsewhere.erase("b.vcf");
  const auto report = book.runClean();
  EXPECT_EQ(report.up, SyncCounts());
  EXPECT_EQ(report.down, SyncCounts());
  EXPECT_EQ(syncSource().countSyncCards(book.container()), 3U);
}

TEST_F(BookOfFour, BringsBackWhatWasDeletedHereAndChangedThere) {
  book.remove(book.persons()[1]);
  elsewhere.put("b.vcf", cardText("b", "bee", "X"));
  const auto report = book.runClean();
  EXPECT_EQ(report.down, (SyncCounts{0, 0, 0, 1}));
  EXPECT_EQ(report.notes, Lines{"bee X was deleted here and changed there, and is back"});
  EXPECT_EQ(book.lines(), (Lines{"a X:", "c X:", "d X:", "bee X:"}));
  elsewhere.log.clear();
  EXPECT_EQ(book.runClean().up, SyncCounts());
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

TEST_F(BookOfFour, DeletesThereWhatHasOnlyAnotherEtag) {
  const auto text = elsewhere.text("b.vcf");
  book.remove(book.persons()[1]);
  elsewhere.put("b.vcf", text);
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 0, 1}));
  EXPECT_FALSE(elsewhere.cards().contains("b.vcf"));
}

TEST_F(BookOfFour, SendsAgainWhatWasDeletedThereAndChangedHere) {
  const auto person = book.persons()[1];
  book.set(person, property_id::kNote, "ours");
  elsewhere.erase("b.vcf");
  const auto report = book.runClean();
  EXPECT_EQ(report.up, (SyncCounts{0, 0, 0, 1}));
  EXPECT_EQ(report.notes, Lines{"b X was deleted there and changed here, and is sent again"});
  EXPECT_EQ(book.persons()[1], person);
  EXPECT_NE(elsewhere.text("b.vcf").find("NOTE:ours"), std::string::npos);
  EXPECT_NE(elsewhere.text("b.vcf").find("UID:b\r\n"), std::string::npos);
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

TEST_F(BookOfFour, BringsBackWhatChangedThereBetweenThePlanAndTheDeletion) {
  book.remove(book.persons()[1]);
  elsewhere.beforePush = [&](const sync::Push& push) {
    if (elsewhere.text(push.href).find("bee") == std::string::npos) {
      elsewhere.put(push.href, cardText("b", "bee", "X"));
    }
  };
  book.runClean();
  EXPECT_EQ(book.lines(), (Lines{"a X:", "c X:", "d X:", "bee X:"}));
}

TEST_F(BookOfFour, KeepsWhatIsEditedHereWhileTheDeletionComes) {
  const auto person = book.persons()[1];
  book.set(book.persons()[0], property_id::kNote, "something to send");
  elsewhere.erase("b.vcf");
  bool edited = false;
  elsewhere.beforePush = [&](const sync::Push&) {
    if (!std::exchange(edited, true)) book.set(person, property_id::kNote, "just now");
  };
  book.runClean();
  EXPECT_EQ(book.text(person, property_id::kNote), "just now");
  EXPECT_NE(elsewhere.text("b.vcf").find("NOTE:just now"), std::string::npos);
}

TEST_F(BookOfFour, DoesNotDeleteThereWhatCameBackHere) {
  const auto person = book.persons()[1];
  book.remove(person);
  journal::undo();
  ASSERT_EQ(book.persons().size(), 4U);
  EXPECT_EQ(book.runClean().up, SyncCounts());
  EXPECT_TRUE(elsewhere.cards().contains("b.vcf"));
}

}  // namespace
}  // namespace ox::test
