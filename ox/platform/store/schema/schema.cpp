#include "ox/platform/store/schema/schema.hpp"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>

#include "ox/base/planted.hpp"
#include "ox/base/private_file.hpp"
#include "ox/base/sqlite/error.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/schema/migration.hpp"
#include "ox/platform/store/schema/tables.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

// Of a new store. A commit of one new person writes five pages, and costs a sixth more than with
// half of this size; an import and a removal of many, which touch pages here and there in every
// index, cost a seventh less. Edits and reading cost the same.
constexpr int kPageBytes = 4096;
constexpr std::int64_t kLogBytesBetweenCheckpoints = std::int64_t{64} << 20U;

[[noreturn]] void fail(StoreError::Kind kind, const std::string& path, const std::string& reason) {
  throw StoreError(kind, path + ": " + reason, path);
}

// Refuses what cannot be a store. Only looks: opening and closing the file here would drop the
// locks that an open connection of this process holds on it.
void checkFile(const std::string& path) {
  try {
    for (const auto* ending : {"", "-wal", "-shm", "-journal"}) refusePlanted(path + ending);
  } catch (const std::system_error& error) {
    throw StoreError(StoreError::Kind::Unavailable, error.what(), path);
  }
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    fail(StoreError::Kind::Unavailable, path, std::strerror(errno));
  }
  if (S_ISDIR(status.st_mode)) fail(StoreError::Kind::NotAStore, path, "is a directory");
  if (!S_ISREG(status.st_mode)) fail(StoreError::Kind::NotAStore, path, "is not a regular file");
}

void makeFile(const std::string& path) {
  try {
    createPrivateFile(path);
  } catch (const std::system_error& error) {
    throw StoreError(StoreError::Kind::Unavailable, error.what(), path);
  }
}

// A file that is refused is left as it is, its log too.
int versionLookedAt(sqlite::Connection& database, const std::string& path,
                    MissingIndexes missing = MissingIndexes::Refuse) {
  try {
    return versionOf(database, path, missing);
  } catch (const FailureError&) {
    database.keepLog();
    throw;
  }
}

void setVersion(sqlite::Connection& database) {
  database.execute(("PRAGMA user_version=" + std::to_string(kSchemaVersion)).c_str());
  database.execute(("PRAGMA application_id=" + std::to_string(kStoreApplicationId)).c_str());
}

void migrate(sqlite::Connection& database, const std::string& path) {
  // Tables, version and mark are one transaction: whoever is killed half way leaves an empty file,
  // which the next opening begins again.
  sqlite::Transaction transaction(database);
  const int from = versionOf(database, path);
  if (from == kSchemaVersion) return;  // another process was faster
  if (from == 0) {
    database.execute(newTables().c_str());
  } else {
    // Under the write lock, so that the copy is what is brought up to date; one that cannot be made
    // leaves the store as it is.
    keepCopy(path, "migration-" + std::to_string(from) + "-" + std::to_string(kSchemaVersion));
    migrateTables(database, from);
  }
  setVersion(database);
  transaction.commit();
}

StoreConnection openMigrated(const std::string& path) {
  StoreConnection store(sqlite::Connection(path, sqlite::Connection::Mode::ReadWrite));
  auto& database = store.file();
  database.setBusyTimeout(kBusyMilliseconds);
  const int version = versionLookedAt(database, path);
  // The page size counts for a new file alone, and only before the journal mode is set.
  database.execute(("PRAGMA page_size=" + std::to_string(kPageBytes)).c_str());
  database.execute("PRAGMA journal_mode=WAL");
  const auto pages = kLogBytesBetweenCheckpoints / database.queryInteger("PRAGMA page_size");
  database.execute(("PRAGMA wal_autocheckpoint=" + std::to_string(pages)).c_str());
  // 16 MB of pages are kept: a whole book is read no faster with more, since all of it passes.
  database.execute(
      "PRAGMA foreign_keys=ON; PRAGMA synchronous=NORMAL; PRAGMA cache_size=-16384;"
      "PRAGMA temp_store=MEMORY; PRAGMA cell_size_check=ON; PRAGMA journal_size_limit=67108864");
  if (version != kSchemaVersion) migrate(database, path);
  return store;
}

}  // namespace

void throwStoreError(const std::string& path, const std::exception& error) {
  const auto known = kindOf(error);
  const auto kind = known != FailureKind::Other ? known : FailureKind::Unavailable;
  if (kind == FailureKind::NotAStore)
    throw StoreError(kind, path + ": is not a contact store", path);
  const std::string what = error.what();
  throw StoreError(kind, what.starts_with(path) ? what : path + ": " + what, path);
}

StoreConnection openStoreFile(const std::string& path) {
  checkFile(path);
  makeFile(path);
  // Turning a new file to write-ahead logging answers "busy" at once while another process does the
  // same, whatever the time-out says.
  const auto deadline =
      std::chrono::steady_clock::now() + std::chrono::milliseconds(kBusyMilliseconds);
  while (true) {
    try {
      return openMigrated(path);
    } catch (const sqlite::Error& error) {
      if (!error.isBusy() || std::chrono::steady_clock::now() > deadline)
        throwStoreError(path, error);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
  }
}

void bringUpToDate(sqlite::Connection& store, const std::string& path) {
  const int from = versionOf(store, path, MissingIndexes::Allow);
  if (from == kSchemaVersion) return;
  migrateTables(store, from);
  setVersion(store);
}

void syncWriteAheadLog(const sqlite::Connection& store) {
  // The log lies beside the file that a link leads to, not beside the link.
  const auto log = store.logPath();
  const int file = ::open(log.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    if (errno == ENOENT) return;
    fail(StoreError::Kind::Unavailable, log, std::strerror(errno));
  }
  const int result = ::fsync(file);
  const int reason = errno;
  ::close(file);
  if (result != 0) fail(StoreError::Kind::Unavailable, log, std::strerror(reason));
}

StoreConnection openExistingStoreFile(const std::string& path, MissingIndexes missing) {
  checkFile(path);
  std::error_code error;
  if (!std::filesystem::exists(path, error)) {
    fail(StoreError::Kind::Unavailable, path, "does not exist");
  }
  try {
    StoreConnection store(sqlite::Connection(path, sqlite::Connection::Mode::ReadWrite));
    auto& database = store.file();
    database.setBusyTimeout(kBusyMilliseconds);
    if (versionLookedAt(database, path, missing) == 0) {
      fail(StoreError::Kind::NotAStore, path, "is an empty file, not a contact store");
    }
    return store;
  } catch (const sqlite::Error& failure) {
    throwStoreError(path, failure);
  }
}

}  // namespace ox
