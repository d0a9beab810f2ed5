// What is done to a store as a whole, where accounts of it are in step with others: it is checked,
// repaired, made to forget somebody, brought back to a copy, and recovered.
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/salvage/store_salvage.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/upkeep/eraser.hpp"
#include "ox/platform/store/upkeep/repair.hpp"
#include "ox/records/fingerprint.hpp"
#include "tests/platform/store/synced_account.hpp"
#include "tests/support/damaged_rows.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::support {
namespace {

using Texts = std::vector<std::string>;

class KeptSync : public SyncedAccount {
 protected:
  // Beside the cards of Ann and Ben that of their group, which names Ann, a conflict and a run
  // each.
  void SetUp() override {
    SyncedAccount::SetUp();
    SyncRows rows;
    auto group = syncCard("team", 0);
    group.card.record = RecordKey();
    group.card.kind = RecordKind::Group;
    group.texts = SyncCard::Texts{"MEMBER:urn:uuid:uid-of-ann", "agreed", "", "uid-of-ann"};
    rows.cards = {group};
    rows.conflicts.push_back({0, kTeam, "/ann/team/ann.vcf", "Note", "their words", "our", "b", 1});
    rows.conflicts.push_back({0, kTeam, "/ann/team/ben.vcf", "Note", "their words", "our", "b", 1});
    rows.runs.push_back({kTeam, 1, 2, "1 sent", "refused: Ann of the team"});
    rows.runs.push_back({kTeam, 3, 4, "2 sent", ""});
    ASSERT_TRUE(execute(rows)) << reason;
  }

  // Everything into the one file, which is then let go of.
  void close() {
    source->checkpoint();
    source->letGo();
  }

  void runSql(const char* sql) {
    close();
    sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite).execute(sql);
  }

  void damage(const std::string& sql) {
    close();
    writeDamagedRows(storePath(), sql);
  }
};

TEST_F(KeptSync, IsSound) {
  EXPECT_EQ(problems(), Texts{});
}

TEST_F(KeptSync, OfWhichARowIsDamagedIsToldAndNotRead) {
  damage(
      "UPDATE sync_login SET url = 'https://elsewhere.example'; UPDATE sync_book SET token = 't';"
      "UPDATE sync_card SET etag = 'e' WHERE id = 1; UPDATE sync_text SET tags = 'x' WHERE "
      "card = 2; UPDATE sync_conflict SET ours = 'o' WHERE id = 1;"
      "UPDATE sync_run SET counts = 'c' WHERE id = 2");
  EXPECT_EQ(problems(), (Texts{"row 2 of sync_book is damaged: its checksum differs",
                               "row 1 of sync_card is damaged: its checksum differs",
                               "row 1 of sync_conflict is damaged: its checksum differs",
                               "row 1 of sync_login is damaged: its checksum differs",
                               "row 2 of sync_run is damaged: its checksum differs",
                               "row 2 of sync_text is damaged: its checksum differs"}));
  EXPECT_THROW(sync.syncLogins(), StoreError);
  EXPECT_THROW(sync.syncBooks(), StoreError);
  EXPECT_THROW(sync.syncCards(kTeam), StoreError);
  EXPECT_THROW(sync.syncCardsAt(kTeam, Texts{"/ann/team/ann.vcf"}), StoreError);
  EXPECT_THROW(sync.syncCardTexts(std::vector<std::int64_t>{2}), StoreError);
  EXPECT_THROW(sync.syncConflicts(), StoreError);
  EXPECT_THROW(sync.syncRuns(kTeam, 5), StoreError);
  EXPECT_EQ(firstName("ann"), Text("ann")) << "the contacts are none the worse";
}

TEST_F(KeptSync, WithACardThatFitsNothingIsTold) {
  runSql(
      "PRAGMA foreign_keys=OFF; UPDATE sync_card SET record = 77 WHERE id = 1;"
      "UPDATE sync_card SET container = 1 WHERE id = 2; DELETE FROM sync_text WHERE card = 3;"
      "INSERT INTO sync_card(container, record, kind, href, path, etag, uid, fingerprint, beside,"
      " intent, keeps_less, refused, refused_fingerprint) VALUES(2, 77, 0, '', '', '', '', 0, 0, "
      "0, '', '', 0), (9, NULL, 0, '', '', '', '', 0, 0, 0, '', '', 0);"
      "INSERT INTO sync_text VALUES(4, '', '', '', '', ''), (5, '', '', '', '', '')");
  EXPECT_EQ(problems(),
            (Texts{"row 5 of sync_card refers to a row of container that is not there",
                   "card 1: its record was never there", "card 2: its record is in another account",
                   "card 3: its text is missing", "card 4: its record was never there",
                   "card 4: its record has another card"}));
  EXPECT_THROW(sync.syncCardTexts(std::vector<std::int64_t>{3}), StoreError);
}

TEST_F(KeptSync, LosesDamagedCardsToARepairAndIsListedAsAWholeThen) {
  damage(
      "UPDATE sync_card SET path = 'x' WHERE id = 1; UPDATE sync_text SET tags = 'x' WHERE "
      "card = 2; UPDATE sync_run SET counts = 'c' WHERE id = 2");
  const auto repair = repairStore(storePath());
  EXPECT_EQ(repair.left, Texts{});
  EXPECT_EQ(repair.mended,
            (Texts{"forgot damaged cards of accounts in step with others: 2; the next run lists "
                   "everything",
                   "removed damaged conflicts and runs of accounts in step with others: 1"}));
  EXPECT_EQ(problems(), Texts{});
  EXPECT_EQ(sync.syncBooks().front().token, "");
  ASSERT_EQ(sync.syncCards(kTeam).size(), 1U);
  EXPECT_EQ(sync.syncCards(kTeam).front().card.id, 3);
  EXPECT_EQ(sync.recordsWithoutCard(kTeam).size(), 2U);
  EXPECT_EQ(sync.syncRuns(kTeam, 5).size(), 1U);
}

TEST_F(KeptSync, IsMendedWhereABytewiseChangeMadeACardDisagreeWithItsIndex) {
  close();
  auto bytes = fileBytes(storePath());
  const std::string path = "/ann/team/ann.vcf/ann/team/ann.vcf";  // href and path, in the row alone
  const auto place = bytes.find(path);
  ASSERT_NE(place, std::string::npos);
  bytes[place + path.size() - 1] = 'x';
  temporaryFile("contacts.db", bytes);
  EXPECT_THROW(sync.syncCards(kTeam), StoreError);
  EXPECT_EQ(repairStore(storePath()).left, Texts{});
  EXPECT_EQ(problems(), Texts{});
  EXPECT_EQ(sync.countSyncCards(kTeam), 2U);
}

TEST_F(KeptSync, KeepsOfAForgottenPersonWhatTheServerHasToBeTold) {
  source->setValue(key("ann"), RecordKind::Person, property_id::kNote, Object("private words"));
  ASSERT_TRUE(source->save().done);
  ASSERT_TRUE(source->journal().erase(key("ann"), "Ann of the team", 0));
  const auto changed = sync.changedSyncCards(kTeam);
  ASSERT_EQ(changed.size(), 1U);
  const auto& [card, now] = changed.front();
  EXPECT_EQ(now, std::nullopt);
  EXPECT_EQ(card.id, 1);
  EXPECT_EQ(card.href, "/ann/team/ann.vcf");
  EXPECT_EQ(card.path, "/ann/team/ann.vcf");
  EXPECT_EQ(card.etag, "\"ann-1\"");
  EXPECT_EQ(card.uid, "");
  EXPECT_EQ(card.fingerprint, 1U) << "that it was agreed once, and not what";
  const auto texts = sync.syncCardTexts(std::vector<std::int64_t>{1, 2, 3});
  EXPECT_EQ(texts[0], SyncCard::Texts());
  EXPECT_EQ(texts[1], (SyncCard::Texts{"text of ben", "agreed", "tags", "members"}));
  EXPECT_EQ(texts[2].members, "uid-of-ann") << "the server is to be told that she is no member";
  ASSERT_EQ(sync.syncConflicts().size(), 1U);
  EXPECT_EQ(sync.syncConflicts().front().path, "/ann/team/ben.vcf");
  EXPECT_EQ(sync.syncRuns(kTeam, 5).size(), 1U);
  EXPECT_EQ(sync.syncCards(kTeam)[1].card.etag, "\"ben-1\"");
  close();
  for (const auto& ending : {"", "-wal"}) {
    const auto bytes = fileBytes(storePath() + ending);
    for (const auto* words : {"text of ann", "private words", "Ann of the team"}) {
      EXPECT_EQ(bytes.find(words), std::string::npos) << words << ending;
    }
  }
  EXPECT_EQ(problems(), Texts{});
}

TEST_F(KeptSync, ForgetsAPersonInACopyOfItToo) {
  close();
  const auto copy = keepCopy(storePath(), "test");
  ASSERT_TRUE(eraseRecord(copy, key("ann"), ""));
  EXPECT_EQ(fileBytes(copy).find("text of ann"), std::string::npos);
  EXPECT_NE(fileBytes(copy).find("/ann/team/ann.vcf"), std::string::npos);
}

TEST_F(KeptSync, StaysAsItIsWhenTheContactsReturnToACopy) {
  close();
  const auto copy = keepCopy(storePath(), "test");
  edit("ann", "after the copy");
  auto now = syncCard("ann", fingerprintNow("ann"));
  now.card.id = 1;
  now.card.etag = "\"ann-2\"";
  auto book = syncBook(kTeam);
  book.login = 1;
  book.token = "token-2";
  ASSERT_TRUE(execute({.books = {{book, ""}}, .cards = {now}})) << reason;
  remove("ben");
  ASSERT_EQ(changes(), Texts{"ben.vcf gone"});
  ASSERT_TRUE(source->journal().returnToCopy(copy, {}).done);
  EXPECT_EQ(changes(), Texts{"ann.vcf changed"});
  EXPECT_EQ(sync.syncBooks().front().token, "token-2");
  EXPECT_EQ(sync.syncCards(kTeam).front().card.etag, "\"ann-2\"");
  EXPECT_EQ(problems(), Texts{});
}

TEST_F(KeptSync, GoesWithAnAccountThatACopyDoesNotHave) {
  close();
  const auto copy = keepCopy(storePath(), "test");
  SaveRequest request;
  request.newContainers.push_back({"O:ABAccount", "Other", 3});
  request.sync.logins.push_back(syncLogin("other"));
  request.sync.books.push_back({syncBook("O:ABAccount"), "other"});
  ASSERT_TRUE(source->execute(request)) << request.reason;
  ASSERT_TRUE(source->journal().returnToCopy(copy, {}).done);
  ASSERT_EQ(sync.syncLogins().size(), 1U);
  EXPECT_EQ(sync.syncLogins().front().name, "work");
  EXPECT_EQ(sync.syncBooks().size(), 1U);
}

TEST_F(KeptSync, IsInACopyOfTheStoreWhichSaysSo) {
  const auto copy = temporaryPath("copy.db").string();
  copyStore(storePath(), copy);
  const auto copied = openStoreSource(copy);
  auto books = sync.syncBooks();
  for (auto& book : books) book.state = SyncBook::State::Copied;
  EXPECT_EQ(copied->sync().syncBooks(), books);
  EXPECT_EQ(copied->sync().countSyncCards(kTeam), 3U);
}

TEST_F(KeptSync, IsLeftOutOfARecoveredStoreAndTold) {
  close();
  const auto to = temporaryPath("recovered.db").string();
  StoreSalvage salvage(storePath(), to);
  const auto report = salvage.take();
  salvage.put();
  EXPECT_EQ(report.damages, Texts{});
  EXPECT_EQ(report.losses, Texts{"what was kept of accounts in step with a server or folder: they "
                                 "are plain accounts now"});
  EXPECT_EQ(report.records.persons, 2U);
  const auto recovered = openStoreSource(to);
  EXPECT_EQ(recovered->recordsIn(kTeam, RecordKind::Person).size(), 2U);
  EXPECT_TRUE(recovered->sync().syncBooks().empty());
  EXPECT_TRUE(recovered->sync().syncLogins().empty());
}

}  // namespace
}  // namespace ox::support
