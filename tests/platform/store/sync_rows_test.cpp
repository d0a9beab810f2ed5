// What a store keeps of accounts that are in step with others: what is written is read, and what
// becomes of a card when its record or its account goes.
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/process_origin.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/fingerprint.hpp"
#include "tests/support/second_process.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

constexpr const char* kTeam = "T:ABAccount";

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

RecordKey key(const std::string& id) {
  return RecordKey::of(id);
}

SyncLogin login(const std::string& name) {
  SyncLogin login;
  login.name = name;
  login.url = "https://example.org/" + name;
  return login;
}

SyncBook book(const std::string& container) {
  SyncBook book;
  book.container = container;
  book.url = "https://example.org/ann/team/";
  return book;
}

SyncCardChange card(const std::string& record, std::uint64_t fingerprint) {
  SyncCardChange change;
  change.card.container = kTeam;
  change.card.record = key(record);
  change.card.href = "/ann/team/" + record + ".vcf";
  change.card.path = change.card.href;
  change.card.etag = "\"" + record + "-1\"";
  change.card.fingerprint = fingerprint;
  change.texts = SyncCard::Texts{"text of " + record, "agreed", "tags", "members"};
  return change;
}

NewRecord person(const std::string& id, const char* first) {
  PropertyBag values;
  values.set(property_id::kFirst, Object(first));
  return {key(id), RecordKind::Person, kTeam, std::move(values), nullptr};
}

std::uint64_t fingerprintOf(ContactSource& source, const std::string& id) {
  return contentFingerprint(*source.committedValues(key(id)), source.committedImage(key(id)));
}

// An account with a book, and a card for each of these persons.
class SyncedAccount : public testing::Test {
 protected:
  void SetUp() override { make({"ann", "ben"}); }

  void make(const std::vector<std::string>& persons) {
    SaveRequest request;
    request.newContainers.push_back({kTeam, "Team", 3});
    request.sync.logins.push_back(login("work"));
    request.sync.books.push_back({book(kTeam), "work"});
    for (const auto& id : persons) {
      request.additions.push_back(person(id, id.c_str()));
      request.sync.cards.push_back(
          card(id, contentFingerprint(request.additions.back().properties, nullptr)));
    }
    ASSERT_TRUE(source->execute(request)) << request.reason;
  }

  bool execute(SyncRows rows) {
    SaveRequest request;
    request.sync = std::move(rows);
    const bool done = source->execute(request);
    reason = request.reason;
    return done;
  }

  void edit(const std::string& id, const char* note) {
    source->setValue(key(id), RecordKind::Person, property_id::kNote, Object(note));
    ASSERT_TRUE(source->save().done);
  }

  void remove(const std::string& id) {
    source->remove(key(id), RecordKind::Person);
    ASSERT_TRUE(source->save().done);
  }

  // "ben.vcf gone", one for each changed card.
  std::vector<std::string> changes() {
    std::vector<std::string> texts;
    for (const auto& [card, now] : sync.changedSyncCards(kTeam)) {
      texts.push_back(card.href.substr(card.href.rfind('/') + 1) + (now ? " changed" : " gone"));
    }
    return texts;
  }

  std::int64_t count(const std::string& table) {
    sqlite::Connection file(storePath(), sqlite::Connection::Mode::ReadOnly);
    return file.queryInteger(("SELECT count(*) FROM " + table).c_str());
  }

  std::shared_ptr<ContactSource> source = openStoreSource(storePath());
  SyncSource& sync = source->sync();
  std::string reason;
};

using Texts = std::vector<std::string>;

TEST_F(SyncedAccount, KeepsEveryFieldOfALogin) {
  auto all = login("home");
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
  all.lastSuccess = 1'800'000'000'001;
  all.lastError = "no network";
  all.notBefore = 1'800'000'000'002;
  ASSERT_TRUE(execute({.logins = {all}}));
  all.id = 2;
  EXPECT_EQ(sync.syncLogins(), (std::vector{[] {
                                              auto work = login("work");
                                              work.id = 1;
                                              return work;
                                            }(),
                                            all}));
  all.name = "away";
  all.homes.clear();
  all.lastError.clear();
  ASSERT_TRUE(execute({.logins = {all}}));
  EXPECT_EQ(sync.syncLogins().back(), all);
}

TEST_F(SyncedAccount, KeepsEveryFieldOfABook) {
  auto all = book(kTeam);
  all.name = "Our team";
  all.isReadOnly = true;
  all.token = "data:,4";
  all.tag = "ctag-4";
  all.reports = "sync-collection addressbook-multiget";
  all.versions = "3.0";
  all.mostBytes = 6'550'000;
  all.groupSpelling = "x-server";
  all.lastWhole = 1'800'000'000'003;
  all.state = SyncBook::State::Away;
  all.login = 1;
  ASSERT_TRUE(execute({.books = {{all, ""}}}));
  EXPECT_EQ(sync.syncBooks(), std::vector{all});
}

TEST_F(SyncedAccount, KeepsEveryFieldOfACard) {
  auto change = card("group", 0);
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
  change.texts = SyncCard::Texts{std::string("a\0b", 3), "values", "red", "ann"};
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
  auto change = card("ann", 5);
  change.card.id = 1;
  change.card.etag = "\"ann-2\"";
  change.texts.reset();
  ASSERT_TRUE(execute({.cards = {change}}));
  EXPECT_EQ(sync.syncCards(kTeam).front().card.etag, "\"ann-2\"");
  EXPECT_EQ(sync.syncCardTexts(std::vector<std::int64_t>{1}).front().text, "text of ann");
}

TEST_F(SyncedAccount, TellsWhatHasNoCardAndWhatDiffersFromWhatWasAgreed) {
  EXPECT_EQ(changes(), Texts{});
  EXPECT_TRUE(sync.recordsWithoutCard(kTeam).empty());
  SaveRequest request;
  request.additions.push_back(person("cid", "cid"));
  ASSERT_TRUE(source->execute(request));
  edit("ann", "new");
  const auto without = sync.recordsWithoutCard(kTeam);
  ASSERT_EQ(without.size(), 1U);
  EXPECT_EQ(without.front().key, key("cid"));
  EXPECT_EQ(without.front().fingerprint, fingerprintOf(*source, "cid"));
  EXPECT_EQ(changes(), Texts{"ann.vcf changed"});
  EXPECT_EQ(sync.changedSyncCards(kTeam).front().now, fingerprintOf(*source, "ann"));
  edit("ann", "");
  auto intended = card("ben", fingerprintOf(*source, "ben"));
  intended.card.id = 2;
  intended.card.intent = SyncCard::Intent::Create;
  ASSERT_TRUE(execute({.cards = {intended}}));
  EXPECT_EQ(changes(), (Texts{"ann.vcf changed", "ben.vcf changed"}));
}

TEST_F(SyncedAccount, KeepsTheCardOfARemovedRecordUntilItComesBack) {
  remove("ben");
  EXPECT_EQ(changes(), Texts{"ben.vcf gone"});
  EXPECT_TRUE(sync.changedSyncCards(kTeam).front().card.record.isNone());
  ASSERT_TRUE(source->journal().takeBack(std::nullopt, StoreJournal::Last::Command).done);
  EXPECT_EQ(changes(), Texts{});
  EXPECT_EQ(sync.syncCards(kTeam).back().card.record, key("ben"));
  EXPECT_TRUE(sync.recordsWithoutCard(kTeam).empty());
}

const support::SecondProcess removesBen("removesBen", [](const auto&) {
  const auto source = openStoreSource(storePath());
  source->remove(key("ben"), RecordKind::Person);
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
  ASSERT_TRUE(source->journal().takeBack(std::nullopt, StoreJournal::Last::Command).done);
  EXPECT_EQ(sync.syncCards(kTeam).back().card.record, key("ben"));
  EXPECT_EQ(sync.syncCards(kTeam).back().card.etag, "\"ben-2\"");
}

TEST_F(SyncedAccount, GivesACardToAnAdditionThatGotAnotherKey) {
  auto change = card("ann", 0);
  change.card.path = "/ann/team/copy.vcf";
  SaveRequest request;
  request.additions.push_back(person("ann", "Copy"));
  request.sync.cards.push_back(change);
  ASSERT_TRUE(source->execute(request));
  ASSERT_NE(request.additions.front().key, key("ann"));
  EXPECT_EQ(sync.syncCards(kTeam).back().card.record, request.additions.front().key);
}

TEST_F(SyncedAccount, RemovesNothingThatWasChangedMeanwhile) {
  const auto ann = fingerprintOf(*source, "ann");
  const auto ben = fingerprintOf(*source, "ben");
  edit("ann", "changed meanwhile");
  SaveRequest request;
  request.removals = {{key("ann"), ann}, {key("ben"), ben}};
  request.sync.removedCards = {1, 2};
  EXPECT_FALSE(source->execute(request));
  EXPECT_EQ(request.outdatedRecords, (std::vector{key("ann")}));
  EXPECT_EQ(sync.countSyncCards(kTeam), 2U);
  EXPECT_TRUE(source->record(key("ben")));

  request.removals.front().expected = fingerprintOf(*source, "ann");
  EXPECT_TRUE(source->execute(request)) << request.reason;
  EXPECT_EQ(request.outdatedRecords, std::vector<RecordKey>{});
  EXPECT_EQ(sync.countSyncCards(kTeam), 0U);
  EXPECT_FALSE(source->record(key("ann")));
  EXPECT_FALSE(source->record(key("ben")));
}

TEST_F(SyncedAccount, ReplacesNothingThatIsGoneOrWasChangedMeanwhile) {
  const auto ben = fingerprintOf(*source, "ben");
  remove("ben");
  SaveRequest request;
  request.replacements.push_back({key("ben"), {}, nullptr, false, ben});
  request.replacements.push_back({key("ann"), {}, nullptr, false, 1});
  EXPECT_FALSE(source->execute(request));
  EXPECT_EQ(request.outdatedRecords, (std::vector{key("ben"), key("ann")}));
  EXPECT_EQ(*source->committedValues(key("ann"))->text(property_id::kFirst), "ann");
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
  request.additions.push_back(person("cid", "cid"));
  request.sync.cards = {card("cid", 1), card("dora", 2)};
  EXPECT_FALSE(source->execute(request));
  EXPECT_EQ(request.outdatedRecords, (std::vector{key("dora")}));
  EXPECT_FALSE(source->record(key("cid")));
  EXPECT_EQ(sync.countSyncCards(kTeam), 2U);
}

TEST_F(SyncedAccount, KeepsThePictureOfARecordWhoseValuesAreReplaced) {
  source->setImageData(key("ann"), makeData("picture of Ann"));
  ASSERT_TRUE(source->save().done);
  SaveRequest request;
  request.replacements.push_back({key("ann"), person("ann", "Anna").properties, nullptr});
  request.replacements.back().keepsImage = true;
  request.replacements.back().expected = fingerprintOf(*source, "ann");
  ASSERT_TRUE(source->execute(request)) << request.reason;
  EXPECT_EQ(*source->committedImage(key("ann")), "picture of Ann");
  EXPECT_EQ(*source->committedValues(key("ann"))->text(property_id::kFirst), "Anna");
  EXPECT_EQ(storeProblems(storePath()), Texts{});
}

TEST_F(SyncedAccount, KeepsThePictureOfAnAdditionThatIsReplacedInTheSameRequest) {
  SaveRequest request;
  request.additions.push_back(person("cid", "Cid"));
  request.additions.back().image = makeData("picture of Cid");
  request.replacements.push_back({key("cid"), person("cid", "Sid").properties, nullptr});
  request.replacements.back().keepsImage = true;
  ASSERT_TRUE(source->execute(request)) << request.reason;
  EXPECT_EQ(*source->committedImage(key("cid")), "picture of Cid");
  EXPECT_EQ(*source->committedValues(key("cid"))->text(property_id::kFirst), "Sid");
  EXPECT_EQ(storeProblems(storePath()), Texts{});
}

TEST_F(SyncedAccount, GoesWithItsContainerAndTheLoginWithItsLastBook) {
  constexpr const char* kOther = "O:ABAccount";
  SaveRequest other;
  other.newContainers.push_back({kOther, "Other", 3});
  other.sync.books.push_back({book(kOther), "work"});
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
  ASSERT_TRUE(source->journal().takeBack(std::nullopt, StoreJournal::Last::Command).done);
  EXPECT_EQ(source->containerNamed(kTeam), nullptr);
  EXPECT_EQ(count("sync_login") + count("sync_book") + count("sync_card"), 0);
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
  EXPECT_FALSE(execute({.logins = {login("work")}}));
  EXPECT_EQ(reason, "there is a login \"work\" already");
  auto gone = login("other");
  gone.id = 9;
  EXPECT_FALSE(execute({.logins = {gone}}));
  EXPECT_EQ(reason, "the login \"other\" is gone, or another has that name");
  EXPECT_FALSE(execute({.books = {{book(kTeam), "nobody"}}}));
  EXPECT_EQ(reason, "the login of the book https://example.org/ann/team/ is not there");
  EXPECT_FALSE(execute({.books = {{book("nowhere"), "work"}}}));
  EXPECT_EQ(reason, "there is no account nowhere");
  EXPECT_FALSE(execute({.cards = {card("ann", 1)}}));
  EXPECT_EQ(reason, "there is a card at /ann/team/ann.vcf already");
  auto unknown = card("ann", 1);
  unknown.card.id = 9;
  EXPECT_FALSE(execute({.cards = {unknown}}));
  EXPECT_EQ(reason, "the card at /ann/team/ann.vcf is gone, or another has that path");
  EXPECT_FALSE(execute({.conflicts = {{0, kTeam, "/nowhere", "Note", "", "", "", 0}}}));
  EXPECT_EQ(reason, "the conflict of the card at /nowhere is gone, or the card is");
  EXPECT_EQ(storeProblems(storePath()), Texts{});
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

TEST_F(SyncedAccount, StaysAsItIsWhenARunIsTakenBack) {
  SaveRequest run;
  run.removals = {{key("ben"), fingerprintOf(*source, "ben")}};
  run.replacements.push_back({key("ann"), person("ann", "Anna").properties, nullptr});
  run.sync.removedCards = {2};
  auto change = card("ann", contentFingerprint(person("ann", "Anna").properties, nullptr));
  change.card.id = 1;
  run.sync.cards = {change};
  ASSERT_TRUE(source->execute(run)) << run.reason;
  EXPECT_EQ(changes(), Texts{});
  ASSERT_TRUE(source->journal().takeBack(std::nullopt, StoreJournal::Last::Command).done);
  EXPECT_EQ(changes(), Texts{"ann.vcf changed"});
  ASSERT_EQ(sync.recordsWithoutCard(kTeam).size(), 1U);
  EXPECT_EQ(sync.recordsWithoutCard(kTeam).front().key, key("ben"));
}

}  // namespace
}  // namespace ox
