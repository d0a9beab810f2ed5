#include "ox/OxAddressBookSDK/tags/tag_schema.hpp"

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>
#include <thread>

#include "ox/base/sqlite/database_form.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/base/sqlite/index_repair.hpp"
#include "ox/base/sqlite/row_sum.hpp"

namespace ox {
namespace {

constexpr std::chrono::milliseconds kBusyTimeout{10'000};
constexpr std::int64_t kApplicationId = 0x4F785447;  // "OxTG"
constexpr std::int64_t kSchemaVersion = 3;

// tag: the key holds the tag, so that no person can have one twice; position gives the order.
// followed: of each contact store, the last act whose changes of tags are in here.
// SUM: each row carries a checksum and tells whether it is sound (ox/base/sqlite/row_sum.hpp).
constexpr const char* kTables = R"(
  CREATE TABLE tag (
    manager TEXT NOT NULL,
    person TEXT NOT NULL,
    tag TEXT NOT NULL,
    position INTEGER NOT NULL,
    SUM(manager, person, tag, position),
    PRIMARY KEY (manager, person, tag)
  ) WITHOUT ROWID;
  CREATE INDEX tag_person ON tag (person);
  CREATE TABLE followed (
    store BLOB PRIMARY KEY,
    number INTEGER NOT NULL,
    act BLOB NOT NULL,
    SUM(store, number, act)
  ) WITHOUT ROWID;
  PRAGMA application_id = 0x4F785447;
  PRAGMA user_version = 3;
)";

// The tables of the versions before.
constexpr std::string_view kTablesOfVersion1 = R"(
  CREATE TABLE tag (
    manager TEXT NOT NULL,
    person TEXT NOT NULL,
    tag TEXT NOT NULL,
    position INTEGER NOT NULL,
    PRIMARY KEY (manager, person, tag)
  ) WITHOUT ROWID;
)";
constexpr std::string_view kAddedByVersion2 = R"(
  CREATE TABLE followed (
    store BLOB PRIMARY KEY,
    number INTEGER NOT NULL,
    act BLOB NOT NULL
  ) WITHOUT ROWID;
  CREATE INDEX tag_person ON tag (person);
)";

// Version 1 followed no store and had no way to the tags of a person whatever the manager; the rows
// of version 2 carried no checksum.
constexpr const char* kPutAside = R"(
  DROP INDEX IF EXISTS tag_person;
  CREATE TABLE IF NOT EXISTS followed (store BLOB PRIMARY KEY, number, act) WITHOUT ROWID;
  ALTER TABLE tag RENAME TO old_tag;
  ALTER TABLE followed RENAME TO old_followed;
)";
constexpr const char* kMove = R"(
  INSERT INTO tag SELECT manager, person, tag, position FROM old_tag;
  INSERT INTO followed SELECT store, number, act FROM old_followed;
  DROP TABLE old_tag;
  DROP TABLE old_followed;
)";

sqlite::Schema schemaOfVersion(std::int64_t version) {
  if (version == kSchemaVersion) return sqlite::schemaMadeBy(sqlite::withRowSums(kTables));
  std::string tables(kTablesOfVersion1);
  if (version == 2) tables.append(kAddedByVersion2);
  return sqlite::schemaMadeBy(tables);
}

[[noreturn]] void fail(FailureKind kind, const std::string& path, const std::string& reason) {
  throw FailureError(kind, path + ": " + reason, path);
}

bool isEmptyDatabase(sqlite::Connection& connection) {
  return sqlite::formOf(connection).isEmpty();
}

void createSchema(sqlite::Connection& connection) {
  connection.execute("PRAGMA journal_mode = WAL");
  sqlite::Transaction transaction(connection);
  if (!isEmptyDatabase(connection)) return;  // another process was first
  connection.execute(sqlite::withRowSums(kTables).c_str());
  transaction.commit();
}

bool isOfThisVersion(sqlite::Connection& connection) {
  return connection.queryInteger("PRAGMA user_version") == kSchemaVersion;
}

void migrate(sqlite::Connection& connection, const std::string& path) {
  sqlite::Transaction transaction(connection);
  requireTagFile(connection, path);
  if (isOfThisVersion(connection)) return;  // another process was first
  connection.execute(kPutAside);
  connection.execute(sqlite::withRowSums(kTables).c_str());
  connection.execute(kMove);
  transaction.commit();
}

sqlite::Connection waitingConnection(const std::string& path) {
  sqlite::Connection connection(path, sqlite::Connection::Mode::ReadWrite);
  connection.setBusyTimeout(static_cast<int>(kBusyTimeout.count()));
  return connection;
}

sqlite::Connection openOnce(const std::string& path) {
  auto connection = waitingConnection(path);
  if (isEmptyDatabase(connection)) createSchema(connection);
  requireTagFile(connection, path);
  if (!isOfThisVersion(connection)) migrate(connection, path);
  connection.execute("PRAGMA synchronous = NORMAL");
  return connection;
}

}  // namespace

void requireTagFile(sqlite::Connection& connection, const std::string& path,
                    sqlite::MissingIndexes missing) {
  const auto form = sqlite::formOf(connection);
  const auto version = form.version;
  if (form.applicationId != kApplicationId) fail(FailureKind::NotAStore, path, "not a tag file");
  if (version < 1 || version > kSchemaVersion) {
    fail(version > kSchemaVersion ? FailureKind::NewerSchema : FailureKind::NotAStore, path,
         "a tag file of version " + std::to_string(version) + ", this program knows " +
             std::to_string(kSchemaVersion));
  }
  if (version < kSchemaVersion) missing = sqlite::MissingIndexes::Allow;  // a migration makes them
  if (const auto obstacle = obstacleIn(form.schema, schemaOfVersion(version), missing)) {
    connection.keepLog();  // a file that is refused is left as it is
    fail(FailureKind::Corrupt, path,
         sentenceOf(*obstacle) +
             (obstacle->isMissingIndex() ? "; `check --repair` makes it anew" : ""));
  }
}

sqlite::Connection openTagFileAsItIs(const std::string& path, sqlite::MissingIndexes missing) {
  auto connection = waitingConnection(path);
  requireTagFile(connection, path, missing);
  return connection;
}

std::vector<std::string> mendTagFile(const std::string& path,
                                     const std::function<void()>& keepCopy) {
  std::error_code error;
  if (!std::filesystem::exists(path, error) && !error) return {};
  auto connection = waitingConnection(path);
  if (isEmptyDatabase(connection)) return {};
  requireTagFile(connection, path, sqlite::MissingIndexes::Allow);
  // With a rollback journal, whoever makes the copy could be kept from reading.
  connection.execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL");
  sqlite::Transaction transaction(connection);
  requireTagFile(connection, path, sqlite::MissingIndexes::Allow);
  if (!isOfThisVersion(connection) || !sqlite::hasWholePages(connection)) return {};
  const auto missing =
      missingIndexesIn(sqlite::formOf(connection).schema, schemaOfVersion(kSchemaVersion));
  auto mended = sqlite::mendIndexes(connection, missing, {"tag"});
  if (mended.empty()) return {};
  keepCopy();
  transaction.commit();
  return mended;
}

// Two processes that switch a new file to WAL at once make SQLite answer "busy" without waiting.
sqlite::Connection openTagFile(const std::string& path) {
  const auto end = std::chrono::steady_clock::now() + kBusyTimeout;
  while (true) {
    try {
      return openOnce(path);
    } catch (const sqlite::Error& error) {
      if (!error.isBusy() || std::chrono::steady_clock::now() > end) throw;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

bool isEmptyDatabase(const std::string& path) {
  std::error_code error;
  if (std::filesystem::file_size(path, error) == 0 || error) return false;
  try {
    sqlite::Connection connection(path, sqlite::Connection::Mode::ReadOnly);
    return isEmptyDatabase(connection);
  } catch (const sqlite::Error&) {
    return false;
  }
}

bool isTagFile(const std::string& path) {
  constexpr std::string_view kDatabase("SQLite format 3\0", 16);
  constexpr std::size_t kPlaceOfId = 68;
  constexpr std::string_view kId = "OxTG";  // kApplicationId as it stands in the file
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return false;
  std::array<char, kPlaceOfId + kId.size()> start{};
  std::ifstream file(path, std::ios::binary);
  if (!file.read(start.data(), start.size())) return false;
  const std::string_view bytes(start.data(), start.size());
  return bytes.starts_with(kDatabase) && bytes.ends_with(kId);
}

}  // namespace ox
