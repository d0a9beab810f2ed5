// Somebody who was forgotten here is deleted there, by a run that knows no more of her than the
// place of her card.
#include <gtest/gtest.h>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/run/synced_book.hpp"

namespace ox::test {
namespace {

using Lines = std::vector<std::string>;

TEST(Forgotten, IsDeletedThereAndTakenOutOfGroups) {
  BookElsewhere elsewhere;
  elsewhere.put("a.vcf", cardText("uid-of-a", "Ann", "X", {"NOTE:private words"}));
  elsewhere.put("b.vcf", cardText("uid-of-b", "Ben", "X"));
  elsewhere.put("g.vcf", groupText("uid-of-g", "Team", {"uid-of-a", "uid-of-b"}));
  SyncedBook book(elsewhere);
  book.runClean();
  elsewhere.log.clear();
  for (const auto& person : book.persons()) {
    if (book.text(person, property_id::kFirst) != "Ann") continue;
    ASSERT_TRUE(contactSource().journal().erase(person, "Ann X", 0));
  }
  ASSERT_EQ(book.lines(), Lines{"Ben X:"});
  const auto report = book.runClean();
  EXPECT_EQ(report.up, (sync::SyncCounts{0, 1, 1}));
  EXPECT_FALSE(elsewhere.cards().contains("a.vcf"));
  EXPECT_EQ(elsewhere.text("g.vcf").find("uid-of-a"), std::string::npos);
  EXPECT_NE(elsewhere.text("g.vcf").find("uid-of-b"), std::string::npos);
  EXPECT_EQ(book.lines(), Lines{"Ben X:"});
  elsewhere.log.clear();
  book.runClean();
  EXPECT_EQ(elsewhere.log, Lines{"LIST"});
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  EXPECT_EQ(storeProblems(store), Lines{});
}

}  // namespace
}  // namespace ox::test
