// What a store keeps of accounts that are in step with others: what is written is read.
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/platform/store/synced_account.hpp"

namespace ox::support {
namespace {

using Texts = std::vector<std::string>;

TEST_F(SyncedAccount, KeepsEveryFieldOfALogin) {
  auto all = syncLogin("home");
  all.kind = "carddav";
  all.user = "ann@example.org";
  all.passwordKind = "command";
  all.passwordSource = "print-secret home";
  all.scheme = "Digest";
  all.principal = "/principals/ann/";
  all.homes = {"/ann/", "/shared/"};
  all.origins = {"https://example.org", ""};
  all.clientCertificate = "client.pem";
  all.authorities = "ca.pem";
  all.allowHttp = true;
  all.notBefore = 1'800'000'000'002;
  ASSERT_TRUE(execute({.logins = {all}}));
  all.id = 2;
  EXPECT_EQ(sync.syncLogins(), (std::vector{[] {
                                              auto work = syncLogin("work");
                                              work.id = 1;
                                              return work;
                                            }(),
                                            all}));
  all.name = "away";
  all.homes.clear();
  ASSERT_TRUE(execute({.logins = {all}}));
  EXPECT_EQ(sync.syncLogins().back(), all);
}

TEST_F(SyncedAccount, KeepsEveryFieldOfABook) {
  auto all = syncBook(kTeam);
  all.name = "Our team";
  all.readOnly = SyncBook::ReadOnly::AsAsked;
  all.token = "data:,4";
  all.sent = "/a.vcf\n/b.vcf\n";
  all.reports = "sync-collection addressbook-multiget";
  all.versions = "3.0";
  all.mostBytes = 6'550'000;
  all.groupSpelling = "x-server";
  all.lastWhole = 1'800'000'000'003;
  all.lastSuccess = 1'800'000'000'004;
  all.state = SyncBook::State::Away;
  all.login = 1;
  ASSERT_TRUE(execute({.books = {{all, ""}}}));
  EXPECT_EQ(sync.syncBooks(), std::vector{all});
}

TEST_F(SyncedAccount, KeepsEveryFieldOfACard) {
  auto change = syncCard("group", 0);
  auto& all = change.card;
  all.record = RecordKey();
  all.kind = RecordKind::Group;
  all.uid = "urn:uuid:1";
  all.fingerprint = ~std::uint64_t{0};
  all.beside = 7;
  all.intent = SyncCard::Intent::Create;
  all.keepsLess = "PHOTO";
  all.refused = "413 too large";
  all.refusedFingerprint = 9;
  change.texts = SyncCard::Texts{std::string("a\0b", 3), "values", "red", "ann", "sent"};
  ASSERT_TRUE(execute({.cards = {change}}));
  const auto cards = sync.syncCards(kTeam);
  ASSERT_EQ(cards.size(), 3U);
  const auto& [read, now] = cards.back();
  EXPECT_EQ(now, std::nullopt);
  EXPECT_EQ(read.id, 3);
  EXPECT_EQ(read.container, kTeam);
  EXPECT_TRUE(read.record.isNone());
  EXPECT_EQ(read.kind, RecordKind::Group);
  EXPECT_EQ(read.href, "/ann/team/group.vcf");
  EXPECT_EQ(read.path, "/ann/team/group.vcf");
  EXPECT_EQ(read.etag, "\"group-1\"");
  EXPECT_EQ(read.uid, "urn:uuid:1");
  EXPECT_EQ(read.fingerprint, ~std::uint64_t{0});
  EXPECT_EQ(read.beside, 7U);
  EXPECT_EQ(read.intent, SyncCard::Intent::Create);
  EXPECT_EQ(read.keepsLess, "PHOTO");
  EXPECT_EQ(read.refused, "413 too large");
  EXPECT_EQ(read.refusedFingerprint, 9U);
  EXPECT_EQ(sync.syncCardTexts(std::vector<std::int64_t>{3, 99, 1}),
            (std::vector{*change.texts, SyncCard::Texts(),
                         SyncCard::Texts{"text of ann", "agreed", "tags", "members"}}));
  ASSERT_EQ(sync.syncCardsOfGroups(kTeam).size(), 1U);
  EXPECT_EQ(sync.syncCardsOfGroups(kTeam).front().card.id, 3);
  EXPECT_EQ(sync.countSyncCards(kTeam), 3U);
}

TEST_F(SyncedAccount, FindsCardsByTheirPathsInTheOrderAsked) {
  const auto found =
      sync.syncCardsAt(kTeam, Texts{"/ann/team/ben.vcf", "/nowhere", "/ann/team/ann.vcf"});
  ASSERT_EQ(found.size(), 3U);
  EXPECT_EQ(found[0].card.record, key("ben"));
  EXPECT_EQ(found[0].now, found[0].card.fingerprint);
  EXPECT_EQ(found[1].card.id, 0);
  EXPECT_EQ(found[2].card.record, key("ann"));
}

TEST_F(SyncedAccount, OfAnUnknownContainerHasNothing) {
  EXPECT_TRUE(sync.syncCards("nobody").empty());
  EXPECT_TRUE(sync.changedSyncCards("nobody").empty());
  EXPECT_EQ(sync.syncCardsAt("nobody", Texts{"/a"}).size(), 1U);
  EXPECT_EQ(sync.countSyncCards("nobody"), 0U);
  EXPECT_TRUE(sync.recordsWithoutCard("nobody").empty());
  EXPECT_TRUE(sync.syncRuns("nobody", 10).empty());
}

TEST_F(SyncedAccount, KeepsTheTextsOfACardThatIsReplacedWithoutThem) {
  auto change = syncCard("ann", 5);
  change.card.id = 1;
  change.card.etag = "\"ann-2\"";
  change.texts.reset();
  ASSERT_TRUE(execute({.cards = {change}}));
  EXPECT_EQ(sync.syncCards(kTeam).front().card.etag, "\"ann-2\"");
  EXPECT_EQ(sync.syncCardTexts(std::vector<std::int64_t>{1}).front().text, "text of ann");
}

TEST_F(SyncedAccount, KeepsConflictsUntilTheyOrTheirCardsAreRemoved) {
  SyncConflict conflict{0, kTeam, "/ann/team/ann.vcf", "Note", "theirs", "ours", "base", 77};
  auto other = conflict;
  other.path = "/ann/team/ben.vcf";
  ASSERT_TRUE(execute({.conflicts = {conflict, other, other}}));
  conflict.id = 1;
  ASSERT_EQ(sync.syncConflicts().size(), 3U);
  EXPECT_EQ(sync.syncConflicts().front(), conflict);
  conflict.ours = "ours, changed";
  ASSERT_TRUE(execute({.removedConflicts = {2}, .conflicts = {conflict}}));
  ASSERT_EQ(sync.syncConflicts().size(), 2U);
  EXPECT_EQ(sync.syncConflicts().front(), conflict);
  ASSERT_TRUE(execute({.removedCards = {2}}));
  EXPECT_EQ(sync.syncConflicts(), std::vector{conflict});
}

TEST_F(SyncedAccount, KeepsTheLastHundredRunsOfABook) {
  SyncRows rows;
  for (int i = 0; i < 103; ++i) {
    rows.runs.push_back({kTeam, i, i + 1, "counts " + std::to_string(i), i % 2 == 0 ? "" : "no"});
  }
  ASSERT_TRUE(execute(rows));
  const auto runs = sync.syncRuns(kTeam, 1000);
  ASSERT_EQ(runs.size(), 100U);
  EXPECT_EQ(runs.front(), rows.runs[102]);
  EXPECT_EQ(runs.back(), rows.runs[3]);
  EXPECT_EQ(sync.syncRuns(kTeam, 2).size(), 2U);
}

TEST_F(SyncedAccount, RefusesWhatNamesNothingOrATakenName) {
  EXPECT_FALSE(execute({.logins = {syncLogin("work")}}));
  EXPECT_EQ(reason, "there is a login \"work\" already");
  auto gone = syncLogin("other");
  gone.id = 9;
  EXPECT_FALSE(execute({.logins = {gone}}));
  EXPECT_EQ(reason, "the login \"other\" is gone, or another has that name");
  EXPECT_FALSE(execute({.books = {{syncBook(kTeam), "nobody"}}}));
  EXPECT_EQ(reason, "the login of the book https://example.org/ann/team/ is not there");
  EXPECT_FALSE(execute({.books = {{syncBook("nowhere"), "work"}}}));
  EXPECT_EQ(reason, "there is no account nowhere");
  EXPECT_FALSE(execute({.cards = {syncCard("ann", 1)}}));
  EXPECT_EQ(reason, "there is a card at /ann/team/ann.vcf already");
  auto unknown = syncCard("ann", 1);
  unknown.card.id = 9;
  EXPECT_FALSE(execute({.cards = {unknown}}));
  EXPECT_EQ(reason, "the card at /ann/team/ann.vcf is gone, or another has that path");
  EXPECT_FALSE(execute({.conflicts = {{0, kTeam, "/nowhere", "Note", "", "", "", 0}}}));
  EXPECT_EQ(reason, "the conflict of the card at /nowhere is gone, or the card is");
  EXPECT_EQ(problems(), Texts{});
}

}  // namespace
}  // namespace ox::support
