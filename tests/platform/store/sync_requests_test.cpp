// Requests of whoever synchronises, which were put together from what the store held.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/platform/store/values/save_request.hpp"
#include "tests/platform/store/synced_account.hpp"

namespace ox::support {
namespace {

using Texts = std::vector<std::string>;

TEST_F(SyncedAccount, RemovesNothingThatWasChangedMeanwhile) {
  const auto ann = fingerprintNow("ann");
  const auto ben = fingerprintNow("ben");
  edit("ann", "changed meanwhile");
  SaveRequest request;
  request.removals = {{key("ann"), ann}, {key("ben"), ben}};
  request.sync.removedCards = {1, 2};
  EXPECT_FALSE(source->execute(request));
  EXPECT_EQ(request.outdatedRecords, (std::vector{key("ann")}));
  EXPECT_EQ(sync.countSyncCards(kTeam), 2U);
  EXPECT_TRUE(source->record(key("ben")));

  request.removals.front().expected = fingerprintNow("ann");
  EXPECT_TRUE(source->execute(request)) << request.reason;
  EXPECT_EQ(request.outdatedRecords, std::vector<RecordKey>{});
  EXPECT_EQ(sync.countSyncCards(kTeam), 0U);
  EXPECT_FALSE(source->record(key("ann")));
  EXPECT_FALSE(source->record(key("ben")));
}

TEST_F(SyncedAccount, ReplacesNothingThatIsGoneOrWasChangedMeanwhile) {
  const auto ben = fingerprintNow("ben");
  remove("ben");
  SaveRequest request;
  request.replacements.push_back({key("ben"), {}, nullptr, false, ben});
  request.replacements.push_back({key("ann"), {}, nullptr, false, 1});
  EXPECT_FALSE(source->execute(request));
  EXPECT_EQ(request.outdatedRecords, (std::vector{key("ben"), key("ann")}));
  EXPECT_EQ(firstName("ann"), Text("ann"));
}

TEST_F(SyncedAccount, LeavesOutARemovalWithoutExpectationOfWhatIsGone) {
  SaveRequest request;
  request.removals = {{key("nobody")}, {key("ben")}};
  ASSERT_TRUE(source->execute(request));
  EXPECT_TRUE(request.removals[0].leftOut);
  EXPECT_FALSE(request.removals[1].leftOut);
  EXPECT_FALSE(source->record(key("ben")));
}

TEST_F(SyncedAccount, WritesNoCardOfARecordThatIsGone) {
  SaveRequest request;
  request.additions.push_back(syncPerson("cid", "cid"));
  request.sync.cards = {syncCard("cid", 1), syncCard("dora", 2)};
  EXPECT_FALSE(source->execute(request));
  EXPECT_EQ(request.outdatedRecords, (std::vector{key("dora")}));
  EXPECT_FALSE(source->record(key("cid")));
  EXPECT_EQ(sync.countSyncCards(kTeam), 2U);
}

TEST_F(SyncedAccount, GivesACardToAnAdditionThatGotAnotherKey) {
  auto change = syncCard("ann", 0);
  change.card.path = "/ann/team/copy.vcf";
  SaveRequest request;
  request.additions.push_back(syncPerson("ann", "Copy"));
  request.sync.cards.push_back(change);
  ASSERT_TRUE(source->execute(request));
  ASSERT_NE(request.additions.front().key, key("ann"));
  EXPECT_EQ(sync.syncCards(kTeam).back().card.record, request.additions.front().key);
}

TEST_F(SyncedAccount, KeepsThePictureOfARecordWhoseValuesAreReplaced) {
  source->setImageData(key("ann"), makeData("picture of Ann"));
  ASSERT_TRUE(source->save().done);
  SaveRequest request;
  request.replacements.push_back({key("ann"), syncPerson("ann", "Anna").properties, nullptr});
  request.replacements.back().keepsImage = true;
  request.replacements.back().expected = fingerprintNow("ann");
  ASSERT_TRUE(source->execute(request)) << request.reason;
  EXPECT_EQ(*source->committedImage(key("ann")), "picture of Ann");
  EXPECT_EQ(firstName("ann"), Text("Anna"));
  EXPECT_EQ(problems(), Texts{});
}

TEST_F(SyncedAccount, KeepsThePictureOfAnAdditionThatIsReplacedInTheSameRequest) {
  SaveRequest request;
  request.additions.push_back(syncPerson("cid", "Cid"));
  request.additions.back().image = makeData("picture of Cid");
  request.replacements.push_back({key("cid"), syncPerson("cid", "Sid").properties, nullptr});
  request.replacements.back().keepsImage = true;
  ASSERT_TRUE(source->execute(request)) << request.reason;
  EXPECT_EQ(*source->committedImage(key("cid")), "picture of Cid");
  EXPECT_EQ(firstName("cid"), Text("Sid"));
  EXPECT_EQ(problems(), Texts{});
}

}  // namespace
}  // namespace ox::support
