// Stores in whose schema something stands that is not ours: nothing of it is run, nothing else of
// the file is read, and it is refused by the name of that thing.
#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/schema/earlier_tables.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using support::fileBytes;
using support::temporaryPath;

// Whatever stands in a schema can call this one: every connection has it.
int& calls() {
  static int count = 0;
  return count;
}

void noteCall(sqlite3_context* context, int /*count*/, sqlite3_value** /*values*/) {
  ++calls();
  sqlite3_result_int(context, 0);
}

int addNoteOfCalls(sqlite3* database, const char** /*error*/, const void* /*functions*/) {
  return sqlite3_create_function(database, "noted", -1,
                                 SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr,
                                 noteCall, nullptr, nullptr);
}

void offerNoteOfCalls() {
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(addNoteOfCalls));
}

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

void runSql(const std::string& path, const std::string& sql) {
  sqlite::Connection file(path, sqlite::Connection::Mode::ReadWrite);
  sqlite3_db_config(file.handle(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
  file.execute(sql.c_str());
}

std::string storeWith(const std::string& sql) {
  auto path = temporaryPath("prepared.db").string();
  std::filesystem::remove(path);
  support::StoreBuilder(*openStoreSource(path)).person("ann", {.first = "Ann"});
  runSql(path, sql);
  return path;
}

// The kind and the reason, without the path; "" when nothing is refused.
template <typename Step>
std::string refusalOf(const std::string& path, Step step) {
  try {
    step();
    return {};
  } catch (const StoreError& error) {
    EXPECT_EQ(error.kind(), StoreError::Kind::Corrupt);
    EXPECT_EQ(error.subject(), path);
    const std::string what = error.what();
    EXPECT_TRUE(what.starts_with(path + ": ")) << what;
    return what.substr(path.size() + 2);
  }
}

struct Row {
  std::string sql;
  std::string reason;
};

const std::vector<Row>& foreignThings() {
  static const std::vector<Row> rows = {
      {"CREATE TRIGGER t AFTER UPDATE ON act BEGIN SELECT noted(); END",
       "the trigger \"t\" does not belong there"},
      {"CREATE TRIGGER t AFTER DELETE ON record BEGIN DELETE FROM change; END",
       "the trigger \"t\" does not belong there"},
      {"CREATE VIEW v AS SELECT noted()", "the view \"v\" does not belong there"},
      {"CREATE VIEW pragma_user_version AS SELECT noted() + 3 AS user_version",
       "the view \"pragma_user_version\" does not belong there"},
      {"DROP TABLE setting; CREATE VIEW setting AS SELECT 'journal_days' AS name, noted() AS value",
       "the view \"setting\" does not belong there"},
      {"CREATE TABLE other(a)", "the table \"other\" does not belong there"},
      {"CREATE VIRTUAL TABLE other USING fts5(a)", "the table \"other\" does not belong there"},
      {"CREATE INDEX i ON record(kind)", "the index \"i\" does not belong there"},
      {"CREATE INDEX i ON container(noted(name))", "the index \"i\" does not belong there"},
      {"CREATE INDEX i ON record(id) WHERE noted(uid) = 0",
       "the index \"i\" does not belong there"},
      {"DROP INDEX link_parent; CREATE INDEX link_parent ON link(noted(parent))",
       "the index \"link_parent\" is not made as it should be"},
      {"ALTER TABLE record ADD COLUMN more", "the table \"record\" is not made as it should be"},
      {"ALTER TABLE container ADD COLUMN more AS (noted(name))",
       "the table \"container\" is not made as it should be"},
      {"ALTER TABLE container ADD COLUMN more CHECK (noted(more) = 0)",
       "the table \"container\" is not made as it should be"},
      {"ALTER TABLE change RENAME COLUMN place TO somewhere",
       "the table \"change\" is not made as it should be"},
      {"PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql = replace(sql, "
       "'identifier TEXT NOT NULL UNIQUE', 'identifier BLOB NOT NULL UNIQUE')",
       "the table \"container\" is not made as it should be"},
      {"DROP TABLE tag_debt", "the table \"tag_debt\" is missing"},
      {"ANALYZE", "the table \"sqlite_stat1\" does not belong there"},
  };
  return rows;
}

TEST(ForeignSchema, IsRefusedByNameByWhoeverOpensTheStore) {
  offerNoteOfCalls();
  for (const auto& row : foreignThings()) {
    SCOPED_TRACE(row.sql);
    const auto path = storeWith(row.sql);
    const auto before = fileBytes(path);
    const auto expected = row.reason + "; `recover` reads what the store holds";
    const auto copy = temporaryPath("copy.db").string();
    calls() = 0;
    EXPECT_EQ(refusalOf(path, [&] { openStoreSource(path)->containers(); }), expected);
    EXPECT_EQ(refusalOf(path, [&] { storeProblems(path); }), expected);
    EXPECT_EQ(refusalOf(path, [&] { copyStore(path, copy); }), expected);
    EXPECT_EQ(calls(), 0);
    EXPECT_TRUE(fileBytes(path) == before);
    EXPECT_FALSE(std::filesystem::exists(copy));
    EXPECT_FALSE(std::filesystem::exists(path + ".copies"));
  }
}

// SQLite itself cannot read such a schema. What stands in the log may be all that is left.
TEST(ForeignSchema, ThatCannotBeParsedLeavesTheLogAsItIs) {
  const auto path = storeWith("");
  {
    sqlite::Connection file(path, sqlite::Connection::Mode::ReadWrite);
    sqlite3_db_config(file.handle(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
    file.keepLog();
    file.execute(
        "PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql = 'CREATE TABLE setting(' "
        "WHERE name = 'setting'");
  }
  const auto log = fileBytes(path + "-wal");
  ASSERT_GT(log.size(), 2048U);
  EXPECT_NE(refusalOf(path, [&] { openStoreSource(path)->containers(); }), "");
  EXPECT_NE(refusalOf(path, [&] { storeProblems(path); }), "");
  EXPECT_NE(refusalOf(path, [&] { copyStore(path, temporaryPath("copy.db").string()); }), "");
  EXPECT_TRUE(fileBytes(path + "-wal") == log);
}

TEST(ForeignSchema, IsToldToAWatch) {
  support::StoreBuilder(*openStoreSource(storePath())).person("ann", {.first = "Ann"});
  runSql(storePath(), "CREATE TRIGGER t AFTER INSERT ON act BEGIN DELETE FROM record; END");
  const failures::Watch watch;
  EXPECT_EQ(ABAddressBook::sharedAddressBook()->people().size(), 0U);
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_EQ(watch.lastReason(),
            storePath() +
                ": the trigger \"t\" does not belong there; `recover` reads what the store holds");
}

TEST(ForeignSchema, OfAnEarlierVersionIsComparedWithThatVersionAndNotBroughtUpToDate) {
  const std::array tables = {std::string(kTablesOfVersion1), std::string(kTablesOfVersion2),
                             tablesOfVersion3()};
  for (int version = 1; version <= 3; ++version) {
    SCOPED_TRACE(version);
    const auto path = temporaryPath("old" + std::to_string(version) + ".db").string();
    {
      sqlite::Connection store(path, sqlite::Connection::Mode::ReadWriteCreate);
      store.execute(tables.at(static_cast<std::size_t>(version) - 1).c_str());
      store.execute(("PRAGMA application_id=" + std::to_string(kStoreApplicationId) +
                     "; PRAGMA user_version=" + std::to_string(version))
                        .c_str());
      EXPECT_EQ(versionOf(store, path), version);
      store.execute("DROP INDEX link_parent");
      EXPECT_EQ(versionOf(store, path), version) << "its indexes are made anew anyway";
      store.execute("CREATE TRIGGER t AFTER DELETE ON record BEGIN SELECT 1; END");
    }
    const auto before = fileBytes(path);
    EXPECT_EQ(refusalOf(path, [&] { openStoreSource(path)->containers(); }),
              "the trigger \"t\" does not belong there; `recover` reads what the store holds");
    EXPECT_TRUE(fileBytes(path) == before);
    EXPECT_FALSE(std::filesystem::exists(path + ".copies"));
  }
}

TEST(ForeignSchema, IsThatOfThisVersionUnderTheNumberOfAnEarlierOne) {
  for (const auto* number : {"PRAGMA user_version=2", "PRAGMA user_version=3"}) {
    const auto path = storeWith(number);
    EXPECT_EQ(refusalOf(path, [&] { openStoreSource(path)->containers(); }),
              "the index \"sqlite_autoindex_sync_login_1\" does not belong there; "
              "`recover` reads what the store holds");
  }
}

TEST(MissingIndex, IsToldWithWhatMakesItAnew) {
  for (const auto* index :
       {"link_parent", "link_child", "content_card_uid", "content_fingerprint", "origin_undoes",
        "sync_card_path", "sync_card_record", "sync_conflict_card", "sync_run_container"}) {
    const auto path = storeWith(std::string("DROP INDEX ") + index);
    const auto before = fileBytes(path);
    EXPECT_EQ(
        refusalOf(path, [&] { openStoreSource(path)->containers(); }),
        "the index \"" + std::string(index) + "\" is missing; `check --repair` makes it anew");
    EXPECT_EQ(storeProblems(path),
              (std::vector<std::string>{"the index " + std::string(index) + " is missing"}));
    EXPECT_EQ(countsOfStore(path).persons, 1U);
    EXPECT_TRUE(fileBytes(path) == before);
  }
}

TEST(Schema, IsWhatTheStatementsSay) {
  for (const std::string& tables : {std::string(kTablesOfVersion1), std::string(kTablesOfVersion2),
                                    tablesOfVersion3(), emptyTables()}) {
    sqlite::Connection file(":memory:", sqlite::Connection::Mode::ReadWriteCreate);
    file.execute(tables.c_str());
    EXPECT_TRUE(sqlite::formOf(file).schema == sqlite::schemaMadeBy(tables));
  }
}

}  // namespace
}  // namespace ox
