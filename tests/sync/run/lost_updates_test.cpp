// What was sent and has arrived, though its answer was lost, is ours, whatever was changed here
// since.
#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using sync::SyncCounts;
using Lines = std::vector<std::string>;

class LostUpdate : public testing::Test {
 protected:
  LostUpdate() {
    elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"TITLE:Director"}));
    book.runClean();
  }
  RecordKey ann() const { return book.onlyPerson(); }
  // The connection breaks as soon as the change has arrived.
  void loseAnswer() {
    elsewhere.requests = 0;
    elsewhere.breaksAfter = 1;  // after the listing
    EXPECT_EQ(book.run().state, sync::BookReport::State::Failed);
    elsewhere.breaksAfter.reset();
  }

  BookElsewhere elsewhere;
  SyncedBook book{elsewhere};
};

TEST_F(LostUpdate, MakesNoConflictWithOurOwnValue) {
  book.set(ann(), property_id::kJobTitle, "Head of sales");
  loseAnswer();
  ASSERT_NE(elsewhere.text("ann.vcf").find("TITLE:Head of sales"), std::string::npos);
  book.set(ann(), property_id::kJobTitle, "President");
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 1, 0}));
  EXPECT_EQ(book.text(ann(), property_id::kJobTitle), "President");
  EXPECT_NE(elsewhere.text("ann.vcf").find("TITLE:President"), std::string::npos);
}

TEST_F(LostUpdate, IsNoReasonToBringBackWhoWasDeletedSince) {
  book.set(ann(), property_id::kJobTitle, "Head of sales");
  loseAnswer();
  book.remove(ann());
  EXPECT_EQ(book.runClean().up, (SyncCounts{0, 0, 1}));
  EXPECT_TRUE(elsewhere.cards().empty());
}

TEST_F(LostUpdate, ThatOthersHaveChangedSinceIsMerged) {
  book.set(ann(), property_id::kJobTitle, "Head of sales");
  loseAnswer();
  elsewhere.put("ann.vcf", cardText("ann", "Ann", "Lee", {"TITLE:Cook"}));
  book.set(ann(), property_id::kJobTitle, "President");
  const auto report = book.run();
  EXPECT_EQ(report.conflicts, 1U);
  EXPECT_EQ(book.text(ann(), property_id::kJobTitle), "Cook");
}

TEST_F(LostUpdate, WithAPictureThatWasChangedSinceToo) {
  book.setPhoto(ann(), "first");
  loseAnswer();
  book.setPhoto(ann(), "second");
  book.runClean();
  EXPECT_EQ(book.photo(ann()), "second");
}

TEST_F(LostUpdate, IsForgottenWhenTheAnswerHasCome) {
  book.set(ann(), property_id::kJobTitle, "Head of sales");
  book.runClean();
  const std::vector<std::int64_t> ids = {syncSource().syncCards(book.container())[0].card.id};
  EXPECT_EQ(syncSource().syncCardTexts(ids)[0].sent, "");
}

}  // namespace
}  // namespace ox::test
