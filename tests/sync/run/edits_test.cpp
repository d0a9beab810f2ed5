#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::BookReport;
using sync::SyncCounts;
using Lines = std::vector<std::string>;

// Both sides know Ann.
class BookInStep : public testing::Test {
 protected:
  BookInStep() {
    elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee",
                                      {"TEL;TYPE=CELL:1", "item1.TEL:2", "item1.X-ABLabel:Boat",
                                       "X-SOMETHING;X-Y=1:kept"}));
    book.runClean();
    elsewhere.log.clear();
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
  RecordKey ann() const { return book.onlyPerson(); }
};

TEST_F(BookInStep, HoldsWhatWasThere) {
  EXPECT_EQ(book.lines(), Lines{"Ann Lee: 1 2"});
}

TEST_F(BookInStep, WritesNothingOnEitherSideWhenRunAgain) {
  const auto before = containerSource().moment();
  const auto report = book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(containerSource().moment(), before);
  EXPECT_EQ(report.down, SyncCounts());
  EXPECT_EQ(report.up, SyncCounts());
}

TEST_F(BookInStep, TakesAnEdit) {
  elsewhere.put("ann.vcf", cardText("ann", "Anna", "Lee", {"TEL;TYPE=CELL:1"}));
  const auto report = book.runClean();
  EXPECT_EQ(book.lines(), Lines{"Anna Lee: 1"});
  EXPECT_EQ(report.down, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(elsewhere.log, (Lines{"LIST", "FETCH 1"}));
}

TEST_F(BookInStep, WritesOverNoEditWhoseTagIsTheSame) {
  elsewhere.keepsEtags = true;
  auto text = elsewhere.text("ann.vcf");
  elsewhere.put("ann.vcf", text.insert(text.find("TEL"), "TITLE:theirs\r\n"));
  book.set(ann(), property_id::kNote, "ours");
  book.runClean();
  EXPECT_EQ(book.text(ann(), property_id::kJobTitle), "theirs");
  EXPECT_EQ(book.text(ann(), property_id::kNote), "ours");
  EXPECT_NE(elsewhere.text("ann.vcf").find("TITLE:theirs\r\n"), std::string::npos);
  EXPECT_NE(elsewhere.text("ann.vcf").find("NOTE:ours\r\n"), std::string::npos);
}

TEST_F(BookInStep, DeletesNothingThatWasEditedWhoseTagIsTheSame) {
  elsewhere.keepsEtags = true;
  auto text = elsewhere.text("ann.vcf");
  elsewhere.put("ann.vcf", text.insert(text.find("TEL"), "TITLE:theirs\r\n"));
  book.remove(ann());
  book.runClean();
  EXPECT_EQ(elsewhere.cards().size(), 1U);
  EXPECT_EQ(book.text(ann(), property_id::kJobTitle), "theirs");
}

TEST_F(BookInStep, AsksAgainForACardThatCouldNotBeFetched) {
  elsewhere.put("bob.vcf", cardText("bob", "Bob", "Ray"));
  elsewhere.failing.insert("bob.vcf");
  const auto report = book.run();
  ASSERT_EQ(report.refused.size(), 1U);
  EXPECT_EQ(report.refused.front().reason, "not now");
  elsewhere.failing.clear();
  EXPECT_EQ(book.runClean().down, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(book.lines(), (Lines{"Ann Lee: 1 2", "Bob Ray:"}));
}

TEST_F(BookInStep, SendsAnEditInTheTextThatIsThere) {
  book.set(ann(), property_id::kNote, "hello");
  const auto report = book.runClean();
  EXPECT_EQ(report.up, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(elsewhere.log, (Lines{"LIST", "PUT ann.vcf", "FETCH 1"}));
  const auto& text = elsewhere.text("ann.vcf");
  EXPECT_NE(text.find("\r\nTEL;TYPE=CELL:1\r\nitem1.TEL:2\r\nitem1.X-ABLabel:Boat\r\n"
                      "X-SOMETHING;X-Y=1:kept\r\n"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("NOTE:hello\r\n"), std::string::npos) << text;
  EXPECT_EQ(text.find("X-OX-"), std::string::npos) << text;
}

TEST_F(BookInStep, HasNothingToDoAfterAnEditWasSent) {
  book.set(ann(), property_id::kNote, "hello");
  book.runClean();
  const auto before = containerSource().moment();
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  EXPECT_EQ(containerSource().moment(), before);
}

TEST_F(BookInStep, BringsTogetherEditsOfDifferentProperties) {
  book.set(ann(), property_id::kNote, "ours");
  book.addPhone(ann(), "3");
  elsewhere.put("ann.vcf", cardText("ann", "Anna", "Lee", {"TEL;TYPE=CELL:1", "TEL:4"}));
  const auto report = book.runClean();
  EXPECT_EQ(report.down, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(report.up, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(book.text(ann(), property_id::kFirst), "Anna");
  EXPECT_EQ(book.text(ann(), property_id::kNote), "ours");
  const auto phones = book.phones(ann());
  EXPECT_EQ(std::set<std::string>(phones.begin(), phones.end()),
            (std::set<std::string>{"1", "3", "4"}));
  EXPECT_NE(elsewhere.text("ann.vcf").find("NOTE:ours"), std::string::npos);
}

TEST_F(BookInStep, SendsAndTakesAPhoto) {
  book.setPhoto(ann(), std::string(50'000, 'p'));
  book.runClean();
  EXPECT_NE(elsewhere.text("ann.vcf").find("\r\nPHOTO;ENCODING=b"), std::string::npos);
  // An edit of another property leaves the picture's lines as they are.
  book.set(ann(), property_id::kNote, "hello");
  book.runClean();
  EXPECT_EQ(book.photo(ann()), std::string(50'000, 'p'));
  book.setPhoto(ann(), "other");
  book.runClean();
  EXPECT_NE(elsewhere.text("ann.vcf").find(":b3RoZXI="), std::string::npos);
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"PHOTO;ENCODING=b;TYPE=JPEG:dGhpcmQ="}));
  book.runClean();
  EXPECT_EQ(book.photo(ann()), "third");
}

TEST_F(BookInStep, KeepsAPhotoOfOursBesideAnEditThere) {
  book.setPhoto(ann(), "one");
  book.runClean();
  auto text = elsewhere.text("ann.vcf");
  book.setPhoto(ann(), "two");
  text.insert(text.find("END:VCARD"), "NOTE:theirs\r\n");
  elsewhere.put("ann.vcf", text);
  book.runClean();
  EXPECT_EQ(book.photo(ann()), "two");
  EXPECT_EQ(book.text(ann(), property_id::kNote), "theirs");
  EXPECT_NE(elsewhere.text("ann.vcf").find(":dHdv"), std::string::npos);
}

TEST_F(BookInStep, SendsANewPersonUnderItsUid) {
  const auto bob = book.addPerson("Bob", "Ray", {"7"});
  const auto report = book.runClean();
  EXPECT_EQ(report.up, (SyncCounts{1, 0, 0}));
  const auto uid = bob.text().substr(0, 36);
  const auto& text = elsewhere.text(uid + ".vcf");
  EXPECT_NE(text.find("UID:urn:uuid:" + uid), std::string::npos) << text;
  EXPECT_NE(text.find("REV:2"), std::string::npos) << text;
  EXPECT_EQ(elsewhere.log, (Lines{"LIST", "CREATE " + uid + ".vcf", "FETCH 1"}));
  EXPECT_EQ(book.persons().size(), 2U);
}

TEST_F(BookInStep, CarriesTagsAsCategories) {
  book.setTags(ann(), {"friend", "sailing"});
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 1, 0}));
  EXPECT_NE(elsewhere.text("ann.vcf").find("CATEGORIES:friend,sailing\r\n"), std::string::npos);
  auto text = elsewhere.text("ann.vcf");
  text.replace(text.find("friend,sailing"), 14, "sailing,chess");
  elsewhere.put("ann.vcf", text);
  EXPECT_EQ(book.runClean().down, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(book.tags(ann()), (Lines{"sailing", "chess"}));
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
}

TEST_F(BookInStep, LosesNothingThatIsEditedWhileItRuns) {
  book.set(ann(), property_id::kNote, "first");
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Miller"));
  bool edited = false;
  elsewhere.beforePush = [&](const sync::Push&) {
    if (std::exchange(edited, true)) return;
    book.set(ann(), property_id::kNickname, "Annie");
  };
  book.runClean();
  EXPECT_EQ(book.text(ann(), property_id::kLast), "Miller");
  EXPECT_EQ(book.text(ann(), property_id::kNote), "first");
  EXPECT_EQ(book.text(ann(), property_id::kNickname), "Annie");
  book.runClean();
  EXPECT_NE(elsewhere.text("ann.vcf").find("NICKNAME:Annie"), std::string::npos);
  EXPECT_NE(elsewhere.text("ann.vcf").find("NOTE:first"), std::string::npos);
  EXPECT_NE(elsewhere.text("ann.vcf").find("N:Miller;Ann"), std::string::npos);
}

TEST_F(BookInStep, SendsWhatWasEditedThereWhileItRan) {
  book.set(ann(), property_id::kNote, "ours");
  bool edited = false;
  elsewhere.beforePush = [&](const sync::Push&) {
    if (std::exchange(edited, true)) return;
    elsewhere.put("ann.vcf", cardText("ann", "Anna", "Lee"));
  };
  book.runClean();
  EXPECT_EQ(book.text(ann(), property_id::kFirst), "Anna");
  EXPECT_NE(elsewhere.text("ann.vcf").find("NOTE:ours"), std::string::npos);
  EXPECT_NE(elsewhere.text("ann.vcf").find("N:Lee;Anna"), std::string::npos);
}

TEST_F(BookInStep, FollowsACardToAnotherPlace) {
  const auto record = ann();
  elsewhere.erase("ann.vcf");
  elsewhere.put("moved.vcf", cardText("ann", "Ann", "Moved"));
  const auto report = book.runClean();
  EXPECT_EQ(book.onlyPerson(), record);
  EXPECT_EQ(book.text(record, property_id::kLast), "Moved");
  EXPECT_EQ(report.down, (SyncCounts{0, 1, 0}));
}

TEST_F(BookInStep, ListsEverythingWhereTheServerGivesNoTokens) {
  elsewhere.givesTokens = false;
  book.runClean();
  elsewhere.put("bob.vcf", cardText("bob", "Bob", "Ray"));
  elsewhere.erase("ann.vcf");
  const auto report = book.runClean();
  EXPECT_EQ(report.down, (SyncCounts{1, 0, 1}));
  EXPECT_EQ(book.lines(), Lines{"Bob Ray:"});
  const auto before = containerSource().moment();
  book.runClean();
  EXPECT_EQ(containerSource().moment(), before);
}

TEST_F(BookInStep, PlansAndChangesNothingInADryRun) {
  book.set(ann(), property_id::kNote, "ours");
  book.addPerson("Bob");
  elsewhere.put("cy.vcf", cardText("cy", "Cy", "Doe"));
  const auto before = containerSource().moment();
  sync::SyncOptions options;
  options.isDryRun = true;
  const auto report = book.run(options);
  EXPECT_EQ(report.state, BookReport::State::Planned);
  EXPECT_EQ(report.down, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(report.up, (SyncCounts{1, 1, 0}));
  ASSERT_EQ(report.plan.size(), 3U);
  EXPECT_EQ(report.plan[0].name, "Cy Doe");
  EXPECT_EQ(elsewhere.log, (Lines{"LIST", "FETCH 1"}));
  EXPECT_EQ(containerSource().moment(), before);
}

TEST_F(BookInStep, SendsOrTakesAloneWhenAskedTo) {
  book.set(ann(), property_id::kNote, "ours");
  elsewhere.put("bob.vcf", cardText("bob", "Bob", "Ray"));
  sync::SyncOptions push;
  push.pulls = false;
  EXPECT_EQ(book.run(push).up, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(book.persons().size(), 1U);
  book.set(ann(), property_id::kNote, "again");
  sync::SyncOptions pull;
  pull.pushes = false;
  EXPECT_EQ(book.run(pull).down, (SyncCounts{1, 0, 0}));
  EXPECT_EQ(elsewhere.text("ann.vcf").find("again"), std::string::npos);
  EXPECT_EQ(book.persons().size(), 2U);
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 1, 0}));
  EXPECT_NE(elsewhere.text("ann.vcf").find("NOTE:again"), std::string::npos);
}

// What the server spells its own way, or does not keep.
TEST_F(BookInStep, DoesNotFightAServerThatKeepsLess) {
  elsewhere.rewrite = [](const std::string& text) {
    auto kept = text;
    const auto note = kept.find("NOTE:");
    if (note != std::string::npos) kept.erase(note, kept.find("\r\n", note) + 2 - note);
    return kept;
  };
  book.set(ann(), property_id::kNote, "gone there");
  const auto report = book.runClean();
  EXPECT_EQ(book.text(ann(), property_id::kNote), "gone there");
  EXPECT_EQ(report.notes, Lines{"Ann Lee: the server keeps less or other: note"});
  elsewhere.log.clear();
  EXPECT_TRUE(book.runClean().notes.empty());
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  // An edit there does not take away what they never had.
  auto text = elsewhere.text("ann.vcf");
  text.insert(text.find("END:VCARD"), "NICKNAME:Annie\r\n");
  elsewhere.put("ann.vcf", text);
  book.runClean();
  EXPECT_EQ(book.text(ann(), property_id::kNote), "gone there");
  EXPECT_EQ(book.text(ann(), property_id::kNickname), "Annie");
}

}  // namespace
}  // namespace ox::test
