// A store of version 2, whose journal had a row for each link, becomes one of this version when it
// is opened: what the journal tells, and what it takes back, is what it was.
#include <algorithm>
#include <gtest/gtest.h>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/journal/journal.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

constexpr const char* kVersion2 = R"sql(
PRAGMA page_size=2048;
PRAGMA journal_mode=WAL;
CREATE TABLE container(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  identifier TEXT NOT NULL UNIQUE,
  name TEXT NOT NULL,
  type INTEGER NOT NULL);
CREATE TABLE record(
  id INTEGER PRIMARY KEY,
  uid BLOB NOT NULL UNIQUE,
  kind INTEGER NOT NULL,
  container INTEGER NOT NULL REFERENCES container(id));
CREATE TABLE custom_property(
  name TEXT PRIMARY KEY,
  type INTEGER NOT NULL);
CREATE TABLE link(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  parent INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE,
  child INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE);
CREATE INDEX link_parent ON link(parent);
CREATE UNIQUE INDEX link_child ON link(child, parent);
CREATE TABLE content(
  record INTEGER PRIMARY KEY REFERENCES record(id) ON DELETE CASCADE,
  card_uid TEXT,
  fingerprint INTEGER NOT NULL,
  image INTEGER,
  properties BLOB NOT NULL);
CREATE TABLE image(
  id INTEGER PRIMARY KEY,
  checksum INTEGER NOT NULL,
  data BLOB NOT NULL);
CREATE INDEX content_card_uid ON content(card_uid) WHERE card_uid IS NOT NULL;
CREATE INDEX content_fingerprint ON content(fingerprint);
CREATE TABLE store(name BLOB NOT NULL);
CREATE TABLE origin(
  id INTEGER PRIMARY KEY,
  program TEXT NOT NULL,
  command TEXT NOT NULL,
  together INTEGER NOT NULL,
  undoes INTEGER,
  first_act INTEGER NOT NULL);
CREATE INDEX origin_undoes ON origin(undoes) WHERE undoes IS NOT NULL;
CREATE TABLE act(
  number INTEGER PRIMARY KEY,
  name BLOB NOT NULL,
  at INTEGER NOT NULL,
  origin INTEGER NOT NULL,
  next_record INTEGER NOT NULL,
  next_change INTEGER NOT NULL,
  bytes INTEGER NOT NULL);
CREATE TABLE change(
  id INTEGER PRIMARY KEY,
  what INTEGER NOT NULL,
  record INTEGER,
  container INTEGER,
  other INTEGER,
  place INTEGER,
  before BLOB,
  after BLOB);
CREATE TABLE tag_debt(number INTEGER PRIMARY KEY);
CREATE TABLE setting(name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;

INSERT INTO container(identifier, name, type) VALUES('_local:ABAccount', 'On My Mac', 1),
  ('A:ABAccount', 'iCloud', 3), ('B:ABAccount', 'Work', 3);
DELETE FROM container WHERE identifier = 'B:ABAccount';
INSERT INTO record VALUES(1, 'ann', 0, 1), (2, 'ben', 0, 1), (3, 'cid', 0, 1),
  (5, 'friends', 1, 1), (6, 'chess', 1, 1);
INSERT INTO link VALUES(1, 5, 1), (2, 5, 2), (3, 6, 3), (5, 5, 3), (6, 6, 1), (8, 6, 2);
DELETE FROM link WHERE id IN (2, 8);
INSERT INTO store VALUES(x'00112233445566778899aabbccddeeff');
INSERT INTO origin VALUES(1, 'oxcontacts', 'a command', 0, NULL, 1);
INSERT INTO act VALUES
  (0, x'00000000000000000000000000000000', 1700000000000, 0, 1, 1, 0),
  (1, x'00000000000000000000000000000001', 1700000001000, 1, 7, 1, 24),
  (2, x'00000000000000000000000000000002', 1700000002000, 1, 7, 6, 168),
  (3, x'00000000000000000000000000000003', 1700000003000, 1, 7, 7, 216),
  (4, x'00000000000000000000000000000004', 1700000004000, 1, 7, 9, 288),
  (5, x'00000000000000000000000000000005', 1700000005000, 1, 7, 12, 400);
INSERT INTO change(id, what, record, container, other, place) VALUES
  (1, 5, 5, 1, 1, 1), (2, 5, 5, 1, 2, 2), (3, 5, 6, 1, 3, 3), (4, 5, 6, 1, 4, 4), (5, 5, 5, 1, 3, 5),
  (6, 5, 6, 1, 1, 6),
  (7, 5, 6, 1, 2, 8), (8, 6, 6, 1, 2, 8),
  (9, 6, 5, 1, 2, 2), (10, 6, 6, 1, 4, 4);
INSERT INTO setting VALUES('journal_days', 36500);
INSERT INTO tag_debt VALUES(3);
PRAGMA user_version=2;
PRAGMA application_id=1333281090;
)sql";

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

// Ann, Ben and Cid; Dora was removed by act 5, and by then stood in the group Chess.
void makeStoreOfVersion2() {
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadWriteCreate);
  store.execute(kVersion2);
  const auto valuesOf = [](PropertyId property, const char* name) {
    PropertyBag values;
    values.set(property, Object(name));
    return values;
  };
  const auto picture = std::string("picture of Ann");
  store.prepare("INSERT INTO image VALUES(4, ?1, ?2)")
      .bind(1, static_cast<std::int64_t>(checksum64(picture)))
      .bindBlob(2, picture)
      .run();
  const auto add = [&](std::int64_t row, const PropertyBag& values, std::uint64_t checksum) {
    auto insert = store.prepare("INSERT INTO content VALUES(?1, NULL, ?2, ?3, ?4)");
    const auto bytes = encodeProperties(values);
    insert.bind(1, row)
        .bind(2, static_cast<std::int64_t>(contentFingerprint(values, checksum)))
        .bindBlob(4, bytes);
    if (checksum != 0) {
      insert.bind(3, 4);
    } else {
      insert.bindNull(3);
    }
    insert.run();
  };
  add(1, valuesOf(property_id::kFirst, "Ann"), checksum64(picture));
  add(2, valuesOf(property_id::kFirst, "Ben"), 0);
  add(3, valuesOf(property_id::kFirst, "Cid"), 0);
  add(5, valuesOf(property_id::kGroupName, "Friends"), 0);
  add(6, valuesOf(property_id::kGroupName, "Chess"), 0);
  const auto dora = encodeProperties(valuesOf(property_id::kFirst, "Dora"));
  store
      .prepare(
          "INSERT INTO change(id, what, record, container, place, before, after) "
          "VALUES(11, 3, 4, 1, 0, ?1, 'dora')")
      .bindBlob(1, dora)
      .run();
}

std::string listed(const RecordKeysPtr& keys) {
  std::string text;
  for (const auto& key : *keys) text += (text.empty() ? "" : " ") + key.text();
  return text;
}

std::string members(const char* group) {
  return listed(contactSource().children(RecordKey::of(group), RecordKind::Person));
}

std::string told(const JournalChange& change) {
  const auto act = std::to_string(change.act) + ": ";
  switch (change.kind) {
    case JournalChange::Kind::Linked:
      return act + change.record.text() + " + " + change.other.text();
    case JournalChange::Kind::Unlinked:
      return act + change.record.text() + " - " + change.other.text();
    case JournalChange::Kind::Removed:
      return act + "removed " + change.record.text();
    default:
      return act + "other";
  }
}

const std::vector<std::string> kTold = {"2: friends + ann", "2: friends + ben", "2: chess + cid",
                                        "2: chess + dora",  "2: friends + cid", "3: chess + ann",
                                        "4: chess + ben",   "4: chess - ben",   "5: friends - ben",
                                        "5: chess - dora",  "5: removed dora"};

std::vector<std::string> toldFrom(const JournalPlace& place) {
  journal::ChangesSince changes(place);
  std::vector<std::string> lines;
  while (const auto change = changes.next()) lines.push_back(told(*change));
  return lines;
}

JournalPlace placeIn(std::uint8_t actBefore, std::int64_t change) {
  JournalPlace place;
  place.moment.number = actBefore;
  place.moment.name.back() = actBefore;
  place.change = change;
  return place;
}

TEST(MigrationOfLinks, PacksTheLinksOfOneGroupThatAnActToldOneAfterAnother) {
  makeStoreOfVersion2();
  ASSERT_EQ(storeProblems(storePath()), std::vector<std::string>{});
  openStoreSource(storePath())->containers();
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(store.queryInteger("PRAGMA user_version"), kSchemaVersion);
  EXPECT_EQ(store.queryText("SELECT group_concat(id || ':' || what || ':' || record, ' ') FROM "
                            "change WHERE other IS NULL AND place IS NULL"),
            "1:5:5 3:5:6 5:5:5 6:5:6 7:5:6 8:6:6 9:6:5 10:6:6");
  EXPECT_EQ(store.queryInteger("SELECT count(*) FROM change"), 9);
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

TEST(MigrationOfLinks, KeepsEverythingElse) {
  makeStoreOfVersion2();
  EXPECT_EQ(members("friends"), "ann cid");
  EXPECT_EQ(members("chess"), "cid ann");
  EXPECT_EQ(*contactSource().imageData(RecordKey::of("ann")), "picture of Ann");
  EXPECT_EQ(contactSource().containers().size(), 2U);
  EXPECT_EQ(journal::bounds().days, 36500);
  EXPECT_EQ(journal::moment().number, 5);
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(store.queryText("SELECT hex(name) FROM store"), "00112233445566778899AABBCCDDEEFF");
  EXPECT_EQ(store.queryInteger("SELECT number FROM tag_debt"), 3);
}

TEST(MigrationOfLinks, NeverGivesTheNumberOfALinkOrOfAnAccountAgain) {
  makeStoreOfVersion2();
  SaveRequest request;
  request.links.push_back({RecordKey::of("friends"), RecordKey::of("ben")});
  request.newContainers.push_back({"C:ABAccount", "New", 3});
  ASSERT_TRUE(contactSource().execute(request)) << request.reason;
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(store.queryInteger("SELECT max(id) FROM link"), 9);
  EXPECT_EQ(store.queryInteger("SELECT max(id) FROM container"), 4);
}

TEST(MigrationOfLinks, NumbersThatNoAccountCanHaveAreFoundBeforeIt) {
  makeStoreOfVersion2();
  const auto isTold = [](const std::string& problem) {
    const auto problems = storeProblems(storePath());
    return std::ranges::any_of(
        problems, [&](const auto& told) { return told.find(problem) != std::string::npos; });
  };
  EXPECT_FALSE(isTold("account"));
  const auto change = [](const char* statement) {
    sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite).execute(statement);
  };
  change("UPDATE change SET container = -1 WHERE id = 1");
  EXPECT_TRUE(isTold("change 1 of the journal: it is in no account"));
  change("INSERT INTO container VALUES(4294967297, 'far:ABAccount', 'Far', 3)");
  EXPECT_TRUE(isTold("row 4294967297 of container has a number that no account can have"));
}

TEST(MigrationOfLinks, AFollowerGoesOnWhereverItWas) {
  makeStoreOfVersion2();
  EXPECT_EQ(toldFrom(placeIn(1, 0)), kTold);
  for (std::size_t change = 1; change <= 5; ++change) {
    const auto rest = toldFrom(placeIn(1, static_cast<std::int64_t>(change)));
    const auto from = kTold.begin() + static_cast<std::ptrdiff_t>(change) - 1;
    EXPECT_EQ(rest, std::vector<std::string>(from, kTold.end())) << change;
  }
}

TEST(MigrationOfLinks, TheJournalOfARecordIsWhatItWas) {
  makeStoreOfVersion2();
  const auto historyOf = [](const char* id) {
    std::string text;
    for (const auto& change : journal::historyOf(RecordKey::of(id), 100)) {
      text += told(change) + ", ";
    }
    return text;
  };
  EXPECT_EQ(historyOf("ben"),
            "5: friends - ben, 4: chess - ben, 4: chess + ben, 2: friends + ben, 1: other, ");
  EXPECT_EQ(historyOf("friends"),
            "5: friends - ben, 2: friends + cid, 2: friends + ben, 2: friends + ann, 1: other, ");
  const auto past = journal::recordAt(RecordKey::of("ben"), 1700000004500);
  ASSERT_EQ(past.was, PastRecordAnswer::Was::There);
  EXPECT_EQ(past.record.groups, (std::vector{RecordKey::of("friends")}));
  EXPECT_TRUE(journal::recordAt(RecordKey::of("ben"), 1700000001500).record.groups.empty());
}

TEST(MigrationOfLinks, WhatWasDoneBeforeCanBeTakenBack) {
  makeStoreOfVersion2();
  EXPECT_TRUE(journal::undo(5).done);
  EXPECT_EQ(members("friends"), "ann ben cid");
  EXPECT_EQ(members("chess"), "cid dora ann");
  EXPECT_TRUE(journal::undo(2).done);
  EXPECT_EQ(members("friends"), "");
  EXPECT_EQ(members("chess"), "ann");
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

}  // namespace
}  // namespace ox
