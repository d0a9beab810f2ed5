#include "platform/store/backup.hpp"

#include <filesystem>
#include <system_error>

#include "base/replacement_file.hpp"
#include "base/sqlite/error.hpp"
#include "platform/records/property_bag.hpp"
#include "platform/store/changes.hpp"
#include "platform/store/schema.hpp"

namespace ox {
namespace {

constexpr int kBusyMilliseconds = 10'000;

void refuseSameFile(const std::string& from, const std::string& to) {
  std::error_code error;
  if (!std::filesystem::equivalent(from, to, error) || error) return;
  throw StoreError(StoreError::Kind::Unavailable, to + ": is the store itself");
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

void refuseUnsound(sqlite::Connection& copy, const std::string& to) {
  const auto answer = copy.queryText("PRAGMA quick_check(1)");
  if (answer == "ok") return;
  throw StoreError(StoreError::Kind::Corrupt,
                   to + ": the copy would not be sound: " + answer.value_or(""));
}

// A log or journal that lies beside the target would be taken for that of the new file: it is
// brought into the old one first.
void settleOldFile(const std::string& to) {
  const auto log = to + "-wal";
  if (!std::filesystem::exists(log) && !std::filesystem::exists(to + "-journal")) return;
  sqlite::Connection old(to, sqlite::Connection::Mode::ReadWrite);
  old.queryText("PRAGMA journal_mode=DELETE");
  if (!std::filesystem::exists(log)) return;
  throw StoreError(StoreError::Kind::Busy, to + ": is a store that is in use");
}

// Copies and lets `look` see the copy before it takes the target's place.
template <typename Look>
void copyAndLook(sqlite::Connection& source, const std::string& to, Look look) {
  try {
    ReplacementFile file(to);
    copyInto(source, file.path());
    {
      sqlite::Connection copy(file.path(), sqlite::Connection::Mode::ReadOnly);
      refuseUnsound(copy, to);
      look(copy);
    }
    settleOldFile(to);
    file.commit();
  } catch (const sqlite::Error& error) {
    throwStoreError(to, error);
  } catch (const std::system_error& error) {
    throwStoreError(to, error);
  }
}

}  // namespace

StoreCounts copyStore(const std::string& from, const std::string& to) {
  auto source = openExistingStoreFile(from);
  refuseSameFile(from, to);
  StoreCounts counts;
  copyAndLook(source, to, [&](sqlite::Connection& copy) {
    counts = {countOf(copy, RecordKind::Group), countOf(copy, RecordKind::Person)};
  });
  return counts;
}

void copyDatabase(const std::string& from, const std::string& to) {
  refuseSameFile(from, to);
  try {
    sqlite::Connection source(from, sqlite::Connection::Mode::ReadWrite);
    source.setBusyTimeout(kBusyMilliseconds);
    copyAndLook(source, to, [](sqlite::Connection&) {});
  } catch (const sqlite::Error& error) {
    throwStoreError(from, error);
  }
}

}  // namespace ox
