#include "ox/platform/store/schema/backup.hpp"

#include <cstdint>
#include <filesystem>
#include <system_error>
#include <unistd.h>

#include "ox/base/sqlite/error.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/schema/sync_anchor.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/property_bag.hpp"

namespace ox {
namespace {

void refuseSameFile(const std::string& from, const std::string& to) {
  std::error_code error;
  if (!std::filesystem::equivalent(from, to, error) || error) return;
  throw StoreError(StoreError::Kind::Unavailable, to + ": is the store itself", to);
}

// The whole content in one read transaction: neither a writer nor this program's own unsaved
// changes get in.
void copyInto(sqlite::Connection& source, const std::string& path) {
  auto statement = source.prepare("VACUUM INTO ?1");
  statement.bindText(1, path);
  statement.run();
}

std::uint64_t countOf(sqlite::Connection& store, RecordKind kind) {
  auto rows = store.prepare("SELECT count(*) FROM record WHERE kind = ?1");
  rows.bind(1, static_cast<std::int64_t>(kind));
  rows.step();
  return static_cast<std::uint64_t>(rows.integer(0));
}

RecordCounts countsOf(sqlite::Connection& store) {
  return {countOf(store, RecordKind::Group), countOf(store, RecordKind::Person)};
}

// A copy that is used one day is behind what it was in step with: its own rows tell so.
void markAsCopied(const std::string& path) {
  sqlite::Connection copy(path, sqlite::Connection::Mode::ReadWrite);
  constexpr const char* kTable = "SELECT count(*) FROM sqlite_schema WHERE name = 'sync_book'";
  if (copy.queryInteger(kTable) == 0) return;
  copy.execute("UPDATE sync_book SET state = 2 WHERE sound");
}

void refuseUnsound(sqlite::Connection& copy, const std::string& to) {
  const auto answer = copy.queryText("PRAGMA quick_check(1)");
  if (answer == "ok") return;
  throw StoreError(StoreError::Kind::Corrupt,
                   to + ": the copy would not be sound: " + answer.value_or(""), to);
}

}  // namespace

template <typename Step>
auto DatabaseCopy::guarded(Step step) {
  try {
    return step();
  } catch (const sqlite::Error& error) {
    throwStoreError(target_, error);
  } catch (const std::system_error& error) {
    throwStoreError(target_, error);
  }
}

DatabaseCopy::DatabaseCopy(const std::string& target) : target_(target) {
  guarded([&] { file_.emplace(target); });
  journal_ = file_->path() + "-journal";
}

// A copy that failed may leave its journal behind.
DatabaseCopy::~DatabaseCopy() {
  ::unlink(journal_.c_str());
}

template <typename Look>
void DatabaseCopy::take(sqlite::Connection& source, Look look) {
  guarded([&] {
    copyInto(source, file_->path());
    markAsCopied(file_->path());
    sqlite::Connection copy(file_->path(), sqlite::Connection::Mode::ReadOnly);
    refuseUnsound(copy, target_);
    look(copy);
  });
}

RecordCounts DatabaseCopy::takeStore(const std::string& from) {
  auto source = openExistingStoreFile(from, MissingIndexes::Allow);
  refuseSameFile(from, target_);
  RecordCounts counts;
  take(source.file(), [&](sqlite::Connection& copy) { counts = countsOf(copy); });
  return counts;
}

bool DatabaseCopy::takeDatabase(const std::string& from, WhenDamaged damaged) {
  refuseSameFile(from, target_);
  try {
    sqlite::Connection source(from, sqlite::Connection::Mode::ReadWrite);
    source.setBusyTimeout(kBusyMilliseconds);
    if (source.queryInteger("SELECT count(*) FROM sqlite_schema") == 0) return false;
    take(source, [](sqlite::Connection&) {});
    return true;
  } catch (const FailureError& error) {
    const bool isDamage =
        error.kind() == FailureKind::Corrupt || error.kind() == FailureKind::NotAStore;
    if (isDamage && damaged == WhenDamaged::LeaveOut) return false;
    throwStoreError(from, error);
  }
}

// A log or journal that lies beside the target belongs to the old file but would be taken for that
// of the new one, and its pages would be written over it. So it is brought into the old file first;
// when that cannot be done, somebody has the old file open.
void DatabaseCopy::settleTarget() {
  const auto log = target_ + "-wal";
  if (!std::filesystem::exists(log) && !std::filesystem::exists(target_ + "-journal")) return;
  guarded([&] {
    sqlite::Connection old(target_, sqlite::Connection::Mode::ReadWrite);
    old.queryText("PRAGMA journal_mode=DELETE");
  });
  if (!std::filesystem::exists(log)) return;
  throw StoreError(StoreError::Kind::Busy, target_ + ": is a store that is in use", target_);
}

void DatabaseCopy::put() {
  settleTarget();
  guarded([&] {
    // What was synced of the old file says nothing of the new one, which may be older.
    SyncAnchor::removeOf(target_);
    file_->commit();
  });
}

RecordCounts copyStore(const std::string& from, const std::string& to) {
  DatabaseCopy copy(to);
  const auto counts = copy.takeStore(from);
  copy.put();
  return counts;
}

RecordCounts countsOfStore(const std::string& path) {
  auto store = openExistingStoreFile(path, MissingIndexes::Allow);
  try {
    return countsOf(store.file());
  } catch (const sqlite::Error& error) {
    throwStoreError(path, error);
  }
}

}  // namespace ox
