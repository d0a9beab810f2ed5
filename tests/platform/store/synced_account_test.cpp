// What becomes of the cards of an account when its contacts, or the account, change or go.
#include "tests/platform/store/synced_account.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/records/fingerprint.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::support {
namespace {

using Texts = std::vector<std::string>;

TEST_F(SyncedAccount, TellsWhatHasNoCardAndWhatDiffersFromWhatWasAgreed) {
  EXPECT_EQ(changes(), Texts{});
  EXPECT_TRUE(sync.recordsWithoutCard(kTeam).empty());
  SaveRequest request;
  request.additions.push_back(syncPerson("cid", "cid"));
  ASSERT_TRUE(source->execute(request));
  edit("ann", "new");
  const auto without = sync.recordsWithoutCard(kTeam);
  ASSERT_EQ(without.size(), 1U);
  EXPECT_EQ(without.front().key, key("cid"));
  EXPECT_EQ(without.front().fingerprint, fingerprintNow("cid"));
  EXPECT_EQ(changes(), Texts{"ann.vcf changed"});
  EXPECT_EQ(sync.changedSyncCards(kTeam).front().now, fingerprintNow("ann"));
  edit("ann", "");
  auto intended = syncCard("ben", fingerprintNow("ben"));
  intended.card.id = 2;
  intended.card.intent = SyncCard::Intent::Create;
  ASSERT_TRUE(execute({.cards = {intended}}));
  EXPECT_EQ(changes(), (Texts{"ann.vcf changed", "ben.vcf changed"}));
}

TEST_F(SyncedAccount, KeepsTheCardOfARemovedRecordUntilItComesBack) {
  remove("ben");
  EXPECT_EQ(changes(), Texts{"ben.vcf gone"});
  EXPECT_TRUE(sync.changedSyncCards(kTeam).front().card.record.isNone());
  ASSERT_TRUE(undo());
  EXPECT_EQ(changes(), Texts{});
  EXPECT_EQ(sync.syncCards(kTeam).back().card.record, key("ben"));
  EXPECT_TRUE(sync.recordsWithoutCard(kTeam).empty());
}

const support::SecondProcess removesBen("removesBen", [](const auto&) {
  const auto source = openStoreSource(StoreAddress(StoreEnvironment::instance().contactStore()));
  source->remove(RecordKey::of("ben"), RecordKind::Person);
  return source->save().done ? 0 : 1;
});

TEST_F(SyncedAccount, KeepsTheCardOfARecordThatAnotherProcessRemoved) {
  EXPECT_EQ(changes(), Texts{});
  ASSERT_EQ(removesBen.run().exitCode, 0);
  EXPECT_EQ(changes(), Texts{"ben.vcf gone"});
}

TEST_F(SyncedAccount, KeepsTheRecordOfAReplacedCardThatNamesNone) {
  remove("ben");
  auto change = sync.changedSyncCards(kTeam).front();
  change.card.etag = "\"ben-2\"";
  ASSERT_TRUE(execute({.cards = {{change.card, std::nullopt}}}));
  ASSERT_TRUE(undo());
  EXPECT_EQ(sync.syncCards(kTeam).back().card.record, key("ben"));
  EXPECT_EQ(sync.syncCards(kTeam).back().card.etag, "\"ben-2\"");
}

TEST_F(SyncedAccount, TakesNoCardForADeletionThatNeverHadARecord) {
  auto first = syncCard("first", 0);
  auto second = syncCard("second", 0);
  first.card.record = RecordKey();
  second.card.record = RecordKey();
  ASSERT_TRUE(execute({.cards = {first, second}})) << reason;
  EXPECT_EQ(sync.countSyncCards(kTeam), 4U);
  EXPECT_EQ(changes(), Texts{});
  remove("ben");
  EXPECT_EQ(changes(), Texts{"ben.vcf gone"});
}

TEST_F(SyncedAccount, GoesWithItsContainerAndTheLoginWithItsLastBook) {
  constexpr const char* kOther = "O:ABAccount";
  SaveRequest other;
  other.newContainers.push_back({kOther, "Other", 3});
  other.sync.books.push_back({syncBook(kOther), "work"});
  other.sync.conflicts.push_back({0, kTeam, "/ann/team/ann.vcf", "Note", "t", "o", "b", 5});
  other.sync.runs.push_back({kTeam, 1, 2, "counts", ""});
  ASSERT_TRUE(source->execute(other)) << other.reason;
  SaveRequest request;
  request.removedContainers.push_back({kTeam, true});
  ASSERT_TRUE(source->execute(request));
  EXPECT_EQ(sync.syncLogins().size(), 1U);
  EXPECT_EQ(sync.syncBooks().size(), 1U);
  for (const auto* table : {"sync_card", "sync_text", "sync_conflict", "sync_run"}) {
    EXPECT_EQ(count(table), 0) << table;
  }
  request.removedContainers = {{kOther, true}};
  ASSERT_TRUE(source->execute(request));
  EXPECT_EQ(sync.syncLogins().size(), 0U);
  EXPECT_EQ(sync.syncBooks().size(), 0U);
}

TEST_F(SyncedAccount, GoesWhenTheCommandThatMadeItIsTakenBack) {
  ASSERT_TRUE(undo());
  EXPECT_EQ(source->containerNamed(kTeam), nullptr);
  EXPECT_EQ(count("sync_login") + count("sync_book") + count("sync_card"), 0);
}

TEST_F(SyncedAccount, NotesOfItAloneAreNoCommand) {
  edit("ann", "by hand");
  const auto commands = source->journal().commands(100);
  ASSERT_TRUE(execute({.runs = {{kTeam, 1, 2, "", ""}}}));
  EXPECT_EQ(sync.syncRuns(kTeam, 1).size(), 1U);
  EXPECT_EQ(source->journal().commands(100).size(), commands.size());
  const auto taken = source->journal().takeBack(std::nullopt, StoreJournal::Last::Command);
  ASSERT_TRUE(taken.done);
  EXPECT_EQ(taken.command, commands.front().number);
  EXPECT_EQ(source->committedValues(key("ann"))->text(property_id::kNote), nullptr);
}

TEST_F(SyncedAccount, NotesOfItAloneCannotBeTakenBackByTheirNumber) {
  ASSERT_TRUE(execute({.runs = {{kTeam, 1, 2, "", ""}}}));
  const auto number = source->moment().number;
  const auto taken = source->journal().takeBack(number, StoreJournal::Last::Command);
  EXPECT_FALSE(taken.done);
  EXPECT_TRUE(taken.isUnknown);
  EXPECT_EQ(sync.syncRuns(kTeam, 1).size(), 1U);
}

TEST_F(SyncedAccount, StaysAsItIsWhenARunIsTakenBack) {
  SaveRequest run;
  run.removals = {{key("ben"), fingerprintNow("ben")}};
  run.replacements.push_back({key("ann"), syncPerson("ann", "Anna").properties, nullptr});
  run.sync.removedCards = {2};
  auto change = syncCard("ann", contentFingerprint(syncPerson("ann", "Anna").properties, nullptr));
  change.card.id = 1;
  run.sync.cards = {change};
  ASSERT_TRUE(source->execute(run)) << run.reason;
  EXPECT_EQ(changes(), Texts{});
  ASSERT_TRUE(undo());
  EXPECT_EQ(changes(), Texts{"ann.vcf changed"});
  ASSERT_EQ(sync.recordsWithoutCard(kTeam).size(), 1U);
  EXPECT_EQ(sync.recordsWithoutCard(kTeam).front().key, key("ben"));
}

// A first run of many persons asks nothing for each of them, and a run without a change reads none.
TEST(FirstRun, WritesFourRowsForEachPersonAndAsksForNone) {
  constexpr int kPersons = 1000;
  statementsRun();
  const auto source =
      openStoreSource(StoreAddress(StoreEnvironment::instance().contactStore().string()));
  SaveRequest request;
  request.newContainers.push_back({kTeam, "Team", 3});
  request.sync.logins.push_back(syncLogin("work"));
  request.sync.books.push_back({syncBook(kTeam), "work"});
  for (int i = 0; i < kPersons; ++i) {
    const auto id = "p" + std::to_string(i);
    request.additions.push_back(syncPerson(id, id));
    const auto fingerprint = contentFingerprint(request.additions.back().properties, nullptr);
    request.sync.cards.push_back(syncCard(id, fingerprint));
  }
  source->containers();
  const auto before = statementsRun();
  ASSERT_TRUE(source->execute(request)) << request.reason;
  EXPECT_LT(statementsRun() - before, 4 * kPersons + 40);

  source->containers();
  const auto statements = statementsRun();
  const auto steps = stepsTaken();
  EXPECT_TRUE(source->sync().changedSyncCards(kTeam).empty());
  EXPECT_EQ(statementsRun() - statements, 1U);
  EXPECT_LT(stepsTaken() - steps, 20U * kPersons);
}

}  // namespace
}  // namespace ox::support
