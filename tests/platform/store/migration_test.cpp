// A store of version 1 becomes one of this version when it is opened, with everything in it.
#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/records/property_codec.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

constexpr const char* kVersion1 = R"sql(
PRAGMA page_size=2048;
PRAGMA journal_mode=WAL;
CREATE TABLE container(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  identifier TEXT NOT NULL UNIQUE,
  name TEXT NOT NULL,
  type INTEGER NOT NULL);
CREATE TABLE counter(next_record INTEGER NOT NULL);
INSERT INTO counter VALUES(1);
CREATE TABLE record(
  id INTEGER PRIMARY KEY,
  uid BLOB NOT NULL UNIQUE,
  kind INTEGER NOT NULL,
  container INTEGER NOT NULL REFERENCES container(id));
CREATE TABLE content(
  record INTEGER PRIMARY KEY REFERENCES record(id) ON DELETE CASCADE,
  card_uid TEXT,
  fingerprint INTEGER NOT NULL,
  properties BLOB NOT NULL);
CREATE INDEX content_card_uid ON content(card_uid) WHERE card_uid IS NOT NULL;
CREATE INDEX content_fingerprint ON content(fingerprint);
CREATE TABLE image(
  record INTEGER PRIMARY KEY REFERENCES record(id) ON DELETE CASCADE,
  checksum INTEGER NOT NULL,
  data BLOB NOT NULL);
CREATE TABLE link(
  id INTEGER PRIMARY KEY,
  parent INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE,
  child INTEGER NOT NULL REFERENCES record(id) ON DELETE CASCADE);
CREATE INDEX link_parent ON link(parent);
CREATE UNIQUE INDEX link_child ON link(child, parent);
CREATE TABLE removal(
  id INTEGER PRIMARY KEY AUTOINCREMENT,
  record INTEGER NOT NULL);
CREATE TABLE custom_property(
  name TEXT PRIMARY KEY,
  type INTEGER NOT NULL);
INSERT INTO container(identifier, name, type) VALUES('_local:ABAccount', 'On My Mac', 1);
INSERT INTO container(identifier, name, type) VALUES('A:ABAccount', 'iCloud', 3);
INSERT INTO record VALUES(2, 'ann', 0, 1), (3, 'ben', 0, 2), (5, 'friends', 1, 1);
INSERT INTO link VALUES(7, 5, 2);
INSERT INTO removal(record) VALUES(1), (4), (8);
UPDATE counter SET next_record = 9;
PRAGMA user_version=1;
PRAGMA application_id=1333281090;
)sql";

PropertyBag named(PropertyId property, const char* name) {
  PropertyBag values;
  values.set(property, Object(name));
  return values;
}

std::string storeOfVersion1() {
  auto path = support::temporaryPath("old.db").string();
  sqlite::Connection store(path, sqlite::Connection::Mode::ReadWriteCreate);
  store.execute(kVersion1);
  const auto add = [&](std::int64_t row, const PropertyBag& values, const Data& picture) {
    auto insert = store.prepare("INSERT INTO content VALUES(?1, NULL, ?2, ?3)");
    const auto bytes = encodeProperties(values);
    insert.bind(1, row)
        .bind(2, static_cast<std::int64_t>(contentFingerprint(values, picture)))
        .bindBlob(3, bytes)
        .run();
    if (!picture) return;
    auto image = store.prepare("INSERT INTO image VALUES(?1, ?2, ?3)");
    image.bind(1, row)
        .bind(2, static_cast<std::int64_t>(checksum64(*picture)))
        .bindBlob(3, *picture)
        .run();
  };
  add(2, named(property_id::kFirst, "Ann"), makeData("picture of Ann"));
  add(3, named(property_id::kFirst, "Ben"), nullptr);
  add(5, named(property_id::kGroupName, "Friends"), nullptr);
  return path;
}

std::string schemaOf(const std::string& path) {
  sqlite::Connection store(path, sqlite::Connection::Mode::ReadOnly);
  return store
      .queryText(
          "SELECT group_concat(sql, char(10)) FROM (SELECT sql FROM sqlite_schema "
          "WHERE sql IS NOT NULL AND name NOT LIKE 'sqlite_%' ORDER BY name)")
      .value_or("");
}

std::string firstName(ContactSource& source, const char* id) {
  return std::get<Object>(source.value(RecordKey::of(id), property_id::kFirst))
      .toText()
      .value_or("");
}

TEST(Migration, KeepsEverythingOfAStoreOfVersion1) {
  const auto path = storeOfVersion1();
  ASSERT_EQ(storeProblems(path), std::vector<std::string>{});
  const auto source = openStoreSource(path);
  EXPECT_EQ(source->containers().size(), 2U);
  EXPECT_EQ(source->records(RecordKind::Person),
            (RecordKeys{RecordKey::of("ann"), RecordKey::of("ben")}));
  EXPECT_EQ(firstName(*source, "ann"), "Ann");
  EXPECT_EQ(firstName(*source, "ben"), "Ben");
  EXPECT_EQ(*source->imageData(RecordKey::of("ann")), "picture of Ann");
  EXPECT_EQ(source->imageData(RecordKey::of("ben")), nullptr);
  EXPECT_EQ(*source->children(RecordKey::of("friends"), RecordKind::Person),
            (RecordKeys{RecordKey::of("ann")}));
  EXPECT_EQ(storeProblems(path), std::vector<std::string>{});
}

TEST(Migration, MakesTheTablesOfANewStore) {
  const auto path = storeOfVersion1();
  openStoreSource(path)->containers();
  const auto fresh = support::temporaryPath("fresh.db").string();
  openStoreSource(fresh)->containers();
  EXPECT_EQ(schemaOf(path), schemaOf(fresh));
  EXPECT_EQ(sqlite::Connection(path, sqlite::Connection::Mode::ReadOnly)
                .queryInteger("PRAGMA user_version"),
            kSchemaVersion);
}

TEST(Migration, NeverGivesARowNumberAgain) {
  const auto path = storeOfVersion1();
  const auto source = openStoreSource(path);
  SaveRequest request;
  request.additions.push_back({RecordKey::of("cid"), RecordKind::Person, "A", {}, nullptr});
  ASSERT_TRUE(source->execute(request));
  EXPECT_EQ(sqlite::Connection(path, sqlite::Connection::Mode::ReadOnly)
                .queryInteger("SELECT id FROM record WHERE uid = 'cid'"),
            9);
}

TEST(Migration, KeepsACopyOfTheStoreAsItWas) {
  const auto path = storeOfVersion1();
  openStoreSource(path)->containers();
  std::vector<std::string> copies;
  for (const auto& entry : std::filesystem::directory_iterator(path + ".copies")) {
    copies.push_back(entry.path().string());
  }
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_NE(copies.front().find("-migration-1-4.db"), std::string::npos) << copies.front();
  sqlite::Connection copy(copies.front(), sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(copy.queryInteger("PRAGMA user_version"), 1);
  EXPECT_EQ(copy.queryInteger("SELECT count(*) FROM record"), 3);
}

TEST(Migration, WithoutItsCounterGoesOnBehindTheLastRow) {
  const auto path = storeOfVersion1();
  sqlite::Connection(path, sqlite::Connection::Mode::ReadWrite).execute("DELETE FROM counter");
  const auto source = openStoreSource(path);
  SaveRequest request;
  request.additions.push_back({RecordKey::of("cid"), RecordKind::Person, "A", {}, nullptr});
  ASSERT_TRUE(source->execute(request));
  EXPECT_EQ(source->records(RecordKind::Person).size(), 3U);
}

}  // namespace
}  // namespace ox
