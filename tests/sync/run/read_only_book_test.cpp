// A book that takes no changes: edits are refused when they are made, and those that were made
// before are kept, named, and set back when the user wants it.
#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::SyncCounts;
using Lines = std::vector<std::string>;

class ReadOnlyBook : public testing::Test {
 protected:
  ReadOnlyBook() {
    elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"TITLE:Director"}));
    elsewhere.put("bob.vcf", cardText("bob", "Bob", "Berg"));
    elsewhere.put("club.vcf", groupText("club", "Club", {"ann", "bob"}));
    book.runClean();
    elsewhere.log.clear();
  }

  void becomeReadOnly() {
    elsewhere.bookFacts.isReadOnly = true;
    whole.listsAll = true;
  }
  // "Ann Lee: changed here, and the book takes no changes", a line for each.
  static Lines kept(const sync::BookReport& report) {
    Lines lines;
    for (const auto& card : report.refused) lines.push_back(card.name + ": " + card.reason);
    EXPECT_EQ(report.kept, lines.size());
    return lines;
  }
  bool tryToNote(const RecordKey& record, const char* note) {
    auto& records = recordSource();
    return records.setValue(record, RecordKind::Person, property_id::kNote, Object(note)) &&
           records.save().done;
  }
  RecordKey person(const std::string& first) const {
    for (const auto& key : book.persons()) {
      if (book.text(key, property_id::kFirst) == first) return key;
    }
    return {};
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
  sync::SyncOptions whole;
};

TEST_F(ReadOnlyBook, RefusesEditsWhenTheyAreMadeAndTakesWhatComesFromThere) {
  becomeReadOnly();
  EXPECT_TRUE(book.run(whole).refused.empty());
  EXPECT_FALSE(tryToNote(person("Ann"), "ours"));
  EXPECT_THROW(book.addPerson("Cid"), std::runtime_error);
  EXPECT_THROW(book.remove(person("Bob")), std::runtime_error);
  elsewhere.put("ann.vcf", cardText("ann", "Anna", "Lee"));
  elsewhere.put("eve.vcf", cardText("eve", "Eve", "Moe"));
  elsewhere.erase("bob.vcf");
  EXPECT_EQ(book.runClean().down, (SyncCounts{1, 1, 1}));
  EXPECT_EQ(book.lines(), (Lines{"Anna Lee:", "Eve Moe:"}));
}

TEST_F(ReadOnlyBook, TakesEditsAgainWhenTheBookDoes) {
  becomeReadOnly();
  book.run(whole);
  elsewhere.bookFacts.isReadOnly = false;
  book.run(whole);
  EXPECT_TRUE(tryToNote(person("Ann"), "ours"));
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 1, 0}));
}

TEST_F(ReadOnlyBook, StaysSoWhateverTheBookSaysWhereTheUserWantsIt) {
  auto row = syncSource().syncBooks().front();
  row.readOnly = SyncBook::ReadOnly::AsAsked;
  SaveRequest request;
  request.sync.books.push_back({row, {}});
  ASSERT_TRUE(containerSource().execute(request));
  whole.listsAll = true;
  book.run(whole);
  EXPECT_FALSE(tryToNote(person("Ann"), "ours"));
}

TEST_F(ReadOnlyBook, KeepsAndNamesWhatWasChangedBefore) {
  book.set(person("Ann"), property_id::kNote, "ours");
  book.addPerson("Cid");
  book.remove(person("Bob"));
  becomeReadOnly();
  const Lines all = {"Ann Lee: changed here, and the book takes no changes",
                     "Bob Berg: deleted here, and the book takes no changes",
                     "Club: changed here, and the book takes no changes",
                     "Cid: new here, and the book takes no changes"};
  EXPECT_EQ(kept(book.run(whole)), all);
  elsewhere.log.clear();
  EXPECT_EQ(kept(book.run()), all);
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(book.lines(), (Lines{"Ann Lee:; ours", "Cid :"}));
}

TEST_F(ReadOnlyBook, IsSetBackToWhatStandsThere) {
  const auto ann = person("Ann");
  book.set(ann, property_id::kNote, "ours");
  book.setPhoto(ann, "a picture");
  book.addPerson("Cid");
  book.remove(person("Bob"));
  becomeReadOnly();
  book.run(whole);
  sync::SyncOptions back;
  back.setsBack = true;
  back.isDryRun = true;
  EXPECT_EQ(book.run(back).plan.size(), 4U);
  EXPECT_EQ(book.text(ann, property_id::kNote), "ours");
  back.isDryRun = false;
  const auto report = book.run(back);
  EXPECT_EQ(kept(report), Lines{});
  EXPECT_EQ(report.down, (SyncCounts{0, 2, 1, 1}));
  EXPECT_EQ(report.notes, Lines{});
  EXPECT_EQ(book.lines(), (Lines{"Ann Lee:", "Bob Berg:"}));
  EXPECT_EQ(book.photo(ann), "");
  EXPECT_EQ(book.members(book.groups().front()).size(), 2U);
  elsewhere.log.clear();
  EXPECT_EQ(book.runClean().down, SyncCounts());
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(elsewhere.cards().size(), 3U);
}

TEST_F(ReadOnlyBook, SetsBackWhatWasRefusedThereAndTheConflictsOfIt) {
  const auto ann = person("Ann");
  book.set(ann, property_id::kJobTitle, "Head of sales");
  book.addPerson("Cid");
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"TITLE:President"}));
  elsewhere.refuse = [](const sync::Push& push) {
    sync::Pushed pushed;
    pushed.outcome = sync::Pushed::Outcome::ReadOnly;
    pushed.href = push.href;
    pushed.code = 403;
    return std::optional(pushed);
  };
  const auto refused = book.run();
  EXPECT_EQ(refused.conflicts, 1U);
  ASSERT_EQ(refused.refused.size(), 1U);
  EXPECT_EQ(refused.refused[0].name, "Cid");
  sync::SyncOptions back;
  back.setsBack = true;
  EXPECT_EQ(book.run().kept, 1U);
  book.run(back);
  EXPECT_EQ(book.lines(), (Lines{"Ann Lee:", "Bob Berg:"}));
  EXPECT_TRUE(syncSource().refusedSyncCards(book.container()).empty());
  EXPECT_EQ(book.run().kept, 0U);
}

TEST_F(ReadOnlyBook, LeavesTagsToTheUser) {
  becomeReadOnly();
  book.run(whole);
  book.setTags(person("Ann"), {"friend"});
  EXPECT_EQ(kept(book.run()), Lines{});
  sync::SyncOptions back;
  back.setsBack = true;
  book.run(back);
  EXPECT_EQ(book.tags(person("Ann")), Lines{"friend"});
}

}  // namespace
}  // namespace ox::test
