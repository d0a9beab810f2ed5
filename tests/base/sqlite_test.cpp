#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <sqlite3.h>
#include <string>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/base/sqlite/row_sum.hpp"

namespace ox::sqlite {
namespace {

class Sqlite : public testing::Test {
 protected:
  Sqlite() {
    auto pattern = (std::filesystem::temp_directory_path() / "ox-sqlite-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    folder_ = pattern;
  }
  ~Sqlite() override { std::filesystem::remove_all(folder_); }

  std::string path() const { return (folder_ / "a.db").string(); }
  Connection open(Connection::Mode mode = Connection::Mode::ReadWriteCreate) const {
    return {path(), mode};
  }

 private:
  std::filesystem::path folder_;
};

template <typename Work>
int codeOf(const Work& work) {
  try {
    work();
  } catch (const Error& error) {
    return error.code();
  }
  return 0;
}

TEST_F(Sqlite, OpensOnlyWhatTheModeAllows) {
  EXPECT_EQ(codeOf([&] { open(Connection::Mode::ReadWrite); }), 14);  // SQLITE_CANTOPEN
  EXPECT_FALSE(std::filesystem::exists(path()));
  open().execute("CREATE TABLE t (a)");
  auto reader = open(Connection::Mode::ReadOnly);
  EXPECT_EQ(codeOf([&] { reader.execute("INSERT INTO t VALUES (1)"); }), 8);  // SQLITE_READONLY
}

// Ending one took memory. What could not be ended stayed open, and all that came later was read at
// that moment.
TEST_F(Sqlite, EndsTransactionsWhereMemoryIsShort) {
  auto connection = open();
  ASSERT_EQ(sqlite3_db_config(connection.handle(), SQLITE_DBCONFIG_LOOKASIDE, nullptr, 0, 0), 0);
  connection.execute("CREATE TABLE t (a)");
  const auto endWithoutMemory = [](auto& open) {
    sqlite3_hard_heap_limit64(1);
    open.reset();
    sqlite3_hard_heap_limit64(0);
  };
  std::optional<Snapshot> snapshot(std::in_place, connection);
  connection.queryInteger("SELECT count(*) FROM t");
  endWithoutMemory(snapshot);
  EXPECT_FALSE(connection.isInTransaction());
  std::optional<Transaction> transaction(std::in_place, connection);
  connection.execute("INSERT INTO t VALUES (1)");
  endWithoutMemory(transaction);
  EXPECT_FALSE(connection.isInTransaction());
  EXPECT_EQ(connection.queryInteger("SELECT count(*) FROM t"), 0);
}

TEST_F(Sqlite, TakesANameThatLooksLikeAUriForAPath) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(std::filesystem::path(path()).parent_path());
  Connection("file:a.db?mode=memory", Connection::Mode::ReadWriteCreate)
      .execute("CREATE TABLE t(a)");
  EXPECT_TRUE(std::filesystem::exists("file:a.db?mode=memory"));
  EXPECT_FALSE(std::filesystem::exists("a.db"));
  std::filesystem::current_path(before);
}

TEST_F(Sqlite, BindsAndReadsEveryKindAndKeepsMissingFromEmpty) {
  auto connection = open();
  connection.execute("CREATE TABLE t (a, b, c, d, e, f)");
  const std::string nul("a\0b", 3);
  auto insert = connection.prepare("INSERT INTO t VALUES (?1, ?2, ?3, ?4, ?5, ?6)");
  insert.bind(1, -7).bindText(2, nul).bindText(3, "").bindText(4, nullptr);
  insert.bindBlob(5, "").bindBlob(6, nul).run();
  auto select = connection.prepare("SELECT * FROM t");
  ASSERT_TRUE(select.step());
  EXPECT_EQ(select.integer(0), -7);
  EXPECT_EQ(select.text(1), nul);
  EXPECT_EQ(select.optionalText(2), Text(""));
  EXPECT_EQ(select.optionalText(3), std::nullopt);
  EXPECT_TRUE(select.isNull(3));
  EXPECT_FALSE(select.isNull(4));
  EXPECT_EQ(select.blob(4), "");
  EXPECT_EQ(select.blob(5), nul);
  EXPECT_EQ(select.columnType(5), 4);
  EXPECT_FALSE(select.step());
}

TEST_F(Sqlite, AnswersQueriesWithoutARowWithZeroAndMissing) {
  auto connection = open();
  EXPECT_EQ(connection.queryInteger("SELECT 1 WHERE 0"), 0);
  EXPECT_EQ(connection.queryText("SELECT 'a' WHERE 0"), std::nullopt);
  EXPECT_EQ(connection.queryText("SELECT NULL"), std::nullopt);
  EXPECT_EQ(connection.queryText("SELECT 'a'"), Text("a"));
  EXPECT_EQ(connection.queryInteger("SELECT 5000000000"), 5'000'000'000);
}

TEST_F(Sqlite, ThrowsTheExtendedCodeAndLetsTheStatementRunAgain) {
  auto connection = open();
  EXPECT_EQ(codeOf([&] { connection.prepare("SELEKT"); }), 1);
  EXPECT_EQ(codeOf([&] { connection.execute("SELEKT"); }), 1);
  connection.execute("CREATE TABLE t (a UNIQUE)");
  auto insert = connection.prepare("INSERT INTO t VALUES (?1)");
  insert.bind(1, 1).run();
  EXPECT_EQ(connection.changes(), 1);
  EXPECT_EQ(codeOf([&] { insert.bind(1, 1).run(); }), 2067);  // SQLITE_CONSTRAINT_UNIQUE
  insert.bind(1, 2).run();
  EXPECT_EQ(connection.queryInteger("SELECT count(*) FROM t"), 2);
  EXPECT_EQ(connection.lastRowId(), 2);
}

TEST_F(Sqlite, RollsATransactionBackUnlessItIsCommitted) {
  auto connection = open();
  connection.execute("CREATE TABLE t (a)");
  {
    Transaction transaction(connection);
    connection.execute("INSERT INTO t VALUES (1)");
  }
  EXPECT_EQ(connection.queryInteger("SELECT count(*) FROM t"), 0);
  {
    Transaction transaction(connection);
    connection.execute("INSERT INTO t VALUES (1)");
    transaction.commit();
  }
  EXPECT_EQ(connection.queryInteger("SELECT count(*) FROM t"), 1);
}

TEST_F(Sqlite, TellsABusyFileFromOtherErrors) {
  auto first = open();
  auto second = open();
  first.execute("CREATE TABLE t (a)");
  const Transaction transaction(first);
  bool busy = false;
  try {
    const Transaction other(second);
  } catch (const Error& error) {
    busy = error.isBusy();
  }
  EXPECT_TRUE(busy);
  EXPECT_FALSE(Error(1, "x").isBusy());
}

TEST(SqliteError, TellsItsKindWhateverTheExtendedCode) {
  const std::vector<std::pair<int, FailureKind>> rows = {
      {5, FailureKind::Busy},          // SQLITE_BUSY
      {517, FailureKind::Busy},        // SQLITE_BUSY_SNAPSHOT
      {6, FailureKind::Busy},          // SQLITE_LOCKED
      {13, FailureKind::Full},         // SQLITE_FULL
      {3, FailureKind::Denied},        // SQLITE_PERM
      {26, FailureKind::NotAStore},    // SQLITE_NOTADB
      {11, FailureKind::Corrupt},      // SQLITE_CORRUPT
      {267, FailureKind::Corrupt},     // SQLITE_CORRUPT_VTAB
      {7, FailureKind::NoMemory},      // SQLITE_NOMEM
      {14, FailureKind::Unavailable},  // SQLITE_CANTOPEN
      {778, FailureKind::Unavailable}  // SQLITE_IOERR_WRITE
  };
  for (const auto& [code, kind] : rows) EXPECT_EQ(Error(code, "x").kind(), kind) << code;
}

TEST_F(Sqlite, EndsTheReadWhenTheScopeOfAStatementEnds) {
  auto connection = open();
  connection.execute(
      "PRAGMA journal_mode = WAL; CREATE TABLE t (a); INSERT INTO t VALUES (1), (2)");
  auto select = connection.prepare("SELECT a FROM t");
  {
    StatementScope scope(select);
    EXPECT_TRUE(scope->step());
  }
  // A read that is still open would keep the log from being reset.
  EXPECT_EQ(connection.queryInteger("PRAGMA wal_checkpoint(TRUNCATE)"), 0);
  EXPECT_EQ(std::filesystem::file_size(path() + "-wal"), 0U);
}

TEST_F(Sqlite, MovesAConnectionWithItsStatements) {
  auto first = open();
  first.execute("CREATE TABLE t (a)");
  auto insert = first.prepare("INSERT INTO t VALUES (1)");
  Connection second = std::move(first);
  insert.run();
  auto moved = std::move(insert);
  moved.run();
  EXPECT_EQ(second.queryInteger("SELECT count(*) FROM t"), 2);
}

TEST_F(Sqlite, AsksOneStatementAboutManyKeysInTheirOrder) {
  auto connection = open();
  connection.execute("CREATE TABLE t (id INTEGER PRIMARY KEY, name BLOB)");
  connection.execute("INSERT INTO t VALUES (1, 'one'), (2, x'0074'), (3, ''), (4, 4), (5, NULL)");
  const std::string bytes("\0t", 2);
  KeyList names;
  names.addBlob(bytes);
  names.addText("two");
  names.addText("");
  names.addText("one");
  names.addBlob("one");
  names.add(4);
  names.addText("one");
  auto select =
      connection.prepare("SELECT k.rowid, t.id FROM keys(?1) k CROSS JOIN t ON t.name = k.key");
  const auto found = [&](const KeyList& keys) {
    std::string text;
    const StatementScope scope(select);
    select.bindKeys(1, keys);
    while (select.step()) {
      text += std::to_string(select.integer(0)) + ":" + std::to_string(select.integer(1)) + " ";
    }
    return text;
  };
  EXPECT_EQ(found(names), "0:2 2:3 3:1 5:4 6:1 ");
  EXPECT_EQ(found({}), "");
  KeyList other;
  other.addText("one");
  EXPECT_EQ(found(other), "0:1 ");
}

TEST_F(Sqlite, TakesWhatIsNoListOfKeysForAnEmptyOne) {
  auto connection = open();
  auto select = connection.prepare("SELECT count(*) FROM keys(?1)");
  select.bind(1, 7);
  ASSERT_TRUE(select.step());
  EXPECT_EQ(select.integer(0), 0);
  EXPECT_EQ(codeOf([&] { connection.prepare("SELECT count(*) FROM keys"); }), 1);
  EXPECT_EQ(codeOf([&] { connection.execute("INSERT INTO keys VALUES (1)"); }), 1);
}

// Writes a row, changes its bytes in the file, and looks whether it is sound then.
bool isSoundWith(const std::string& path, const std::string& written, const std::string& now) {
  std::filesystem::remove(path);
  {
    Connection connection(path, Connection::Mode::ReadWriteCreate);
    connection.execute(
        withRowSums("CREATE TABLE t (id INTEGER PRIMARY KEY, text TEXT, SUM(id, text))").c_str());
    connection.prepare("INSERT INTO t(text) VALUES (?1)").bindText(1, written).run();
  }
  std::string bytes;
  {
    std::ifstream file(path, std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(file), {});
  }
  bytes.replace(bytes.find(written), written.size(), now);
  std::ofstream(path, std::ios::binary) << bytes;
  Connection connection(path, Connection::Mode::ReadOnly);
  return connection.queryInteger("SELECT sound FROM t WHERE id = 1") == 1;
}

TEST_F(Sqlite, TellsWhetherARowIsWhatWasWritten) {
  EXPECT_TRUE(isSoundWith(path(), "as it was written", "as it was written"));
  EXPECT_FALSE(isSoundWith(path(), "as it was written", "as it was writtem"));
}

TEST(RowSum, DiffersWhereTypesOrPlacesDo) {
  Connection connection(":memory:", Connection::Mode::ReadWriteCreate);
  for (const auto* different : {"row_sum(1, 2) <> row_sum(2, 1)", "row_sum('1') <> row_sum(1)",
                                "row_sum('a') <> row_sum(x'61')", "row_sum(NULL) <> row_sum(0)",
                                "row_sum('') <> row_sum(NULL)", "row_sum(1) <> row_sum(1, NULL)",
                                "row_sum('ab', 'c') <> row_sum('a', 'bc')"}) {
    EXPECT_EQ(connection.queryInteger(std::string("SELECT ") + different), 1) << different;
  }
}

}  // namespace
}  // namespace ox::sqlite
