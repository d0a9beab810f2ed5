// An account whose book takes no changes: nothing in it changes but what comes from there.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/base/failures.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/running_act.hpp"
#include "tests/platform/store/synced_account.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::support {
namespace {

constexpr const char* kRefusal =
    "the account Team is read-only: the book that it is in step with takes no changes";

SyncRows::BookOfLogin readOnlyBook(SyncBook::ReadOnly readOnly = SyncBook::ReadOnly::AsItSays) {
  auto book = syncBook(kTeam);
  book.login = 1;
  book.readOnly = readOnly;
  return {book, {}};
}

class ReadOnlyAccount : public SyncedAccount {
 protected:
  void SetUp() override {
    SyncedAccount::SetUp();
    SaveRequest request;
    request.additions.push_back(syncPerson("club", "Club"));
    request.additions.back().kind = RecordKind::Group;
    request.links.push_back({key("club"), key("ann")});
    ASSERT_TRUE(source->execute(request));
  }
  void becomeReadOnly() { ASSERT_TRUE(execute({.books = {readOnlyBook()}})) << reason; }
  std::string refusalOf(SaveRequest request) {
    EXPECT_FALSE(source->execute(request));
    return request.reason;
  }
};

TEST_F(ReadOnlyAccount, RefusesEveryEditOfARecordWhenItIsMade) {
  becomeReadOnly();
  const auto ann = key("ann");
  const failures::Watch watch;
  EXPECT_FALSE(source->setValue(ann, RecordKind::Person, property_id::kNote, Object("a note")));
  ASSERT_TRUE(watch.last());
  EXPECT_EQ(*watch.last(), (Failure{FailureKind::Denied, kRefusal, "ann"}));
  EXPECT_FALSE(source->setImageData(ann, makeData("picture")));
  EXPECT_FALSE(source->remove(ann, RecordKind::Person));
  EXPECT_FALSE(source->link(key("club"), key("ben"), RecordKind::Person));
  EXPECT_FALSE(source->unlink(key("club"), ann, RecordKind::Person));
  EXPECT_EQ(watch.lastReason(), kRefusal);
  EXPECT_TRUE(source->unsavedChanges().empty());
  EXPECT_EQ(firstName("ann"), "ann");
}

TEST_F(ReadOnlyAccount, RefusesEveryRequest) {
  becomeReadOnly();
  SaveRequest added;
  added.additions.push_back(syncPerson("cid", "Cid"));
  EXPECT_EQ(refusalOf(added), kRefusal);
  SaveRequest replaced;
  replaced.replacements.push_back({key("ann"), syncPerson("ann", "Anna").properties, nullptr});
  EXPECT_EQ(refusalOf(replaced), kRefusal);
  SaveRequest removed;
  removed.removals.push_back({key("ann")});
  EXPECT_EQ(refusalOf(removed), kRefusal);
  SaveRequest linked;
  linked.links.push_back({key("club"), key("ben")});
  EXPECT_EQ(refusalOf(linked), kRefusal);
  SaveRequest unlinked;
  unlinked.removedLinks.push_back({key("club"), key("ann")});
  EXPECT_EQ(refusalOf(unlinked), kRefusal);
  const RunningAct act;
  EXPECT_EQ(refusalOf(added), kRefusal);
}

TEST_F(ReadOnlyAccount, TakesWhatComesFromElsewhereAndGoesWithAllThatItHolds) {
  becomeReadOnly();
  SaveRequest brought;
  brought.bringsFromElsewhere = true;
  brought.additions.push_back(syncPerson("cid", "Cid"));
  brought.removals.push_back({key("ben")});
  EXPECT_TRUE(source->execute(brought)) << brought.reason;
  EXPECT_EQ(firstName("cid"), "Cid");
  SaveRequest gone;
  gone.removedContainers.push_back({kTeam, true});
  EXPECT_TRUE(source->execute(gone)) << gone.reason;
}

TEST_F(ReadOnlyAccount, KeepsNoOtherAccountFromBeingChanged) {
  becomeReadOnly();
  SaveRequest request;
  request.additions.push_back(syncPerson("cid", "Cid"));
  request.additions.back().container = "_local:ABAccount";
  EXPECT_TRUE(source->execute(request)) << request.reason;
}

TEST_F(ReadOnlyAccount, TakesNoCommandBack) {
  edit("ann", "a note");
  becomeReadOnly();
  const auto report = source->journal().takeBack(std::nullopt, StoreJournal::Last::Command);
  EXPECT_FALSE(report.done);
  EXPECT_EQ(report.reason, kRefusal);
}

const support::SecondProcess makesReadOnly("makesReadOnly", [](const auto&) {
  const auto source = openStoreSource(StoreAddress(StoreEnvironment::instance().contactStore()));
  SaveRequest request;
  request.sync.books.push_back(readOnlyBook(SyncBook::ReadOnly::AsAsked));
  return source->execute(request) ? 0 : 1;
});

TEST_F(ReadOnlyAccount, DropsEditsThatWereMadeBeforeAnotherProcessMadeItSoAndSavesTheOthers) {
  SaveRequest request;
  request.additions.push_back(syncPerson("cid", "Cid"));
  request.additions.back().container = "_local:ABAccount";
  ASSERT_TRUE(source->execute(request));
  source->setValue(key("ann"), RecordKind::Person, property_id::kNote, Object("a note"));
  source->setValue(key("cid"), RecordKind::Person, property_id::kNote, Object("a note"));
  source->remove(key("ben"), RecordKind::Person);
  ASSERT_EQ(makesReadOnly.run().exitCode, 0);
  const auto report = source->save();
  EXPECT_TRUE(report.done);
  ASSERT_EQ(report.dropped.size(), 2U);
  for (const auto& dropped : report.dropped) {
    EXPECT_EQ(dropped.reason, kRefusal);
    EXPECT_EQ(dropped.kind, FailureKind::Denied);
  }
  EXPECT_EQ(source->committedValues(key("ann"))->text(property_id::kNote), nullptr);
  EXPECT_NE(source->committedValues(key("cid"))->text(property_id::kNote), nullptr);
  EXPECT_EQ(firstName("ben"), "ben");
}

}  // namespace
}  // namespace ox::support
