#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "ox/base/replacement_file.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/records/record_counts.hpp"

namespace ox {

// A copy of a store, or of the database of another kind that belongs to one, under a name of its
// own beside the file that it is to replace; gone unless it is put there. Each step throws
// StoreError, and the target is as it was. One thread at a time.
class DatabaseCopy {
 public:
  // Makes it, empty.
  explicit DatabaseCopy(const std::string& target);
  DatabaseCopy(const DatabaseCopy&) = delete;
  DatabaseCopy& operator=(const DatabaseCopy&) = delete;
  ~DatabaseCopy();

  // Where it lies until it is put in its place, and what SQLite puts beside it meanwhile.
  std::vector<std::string> files() const { return {file_->path(), journal_}; }
  const std::string& path() const { return file_->path(); }
  // Takes what is committed at one moment; the result is what a store holds.
  RecordCounts takeStore(const std::string& from);
  // False when there is nothing to put: that one holds no table yet, because another process is
  // just making it, or it is damaged and may be.
  enum class WhenDamaged : std::uint8_t { Fail, LeaveOut };
  bool takeDatabase(const std::string& from, WhenDamaged damaged = WhenDamaged::Fail);
  // Fails when the target is a store that somebody uses: for whoever replaces several files.
  void settleTarget();
  // Settles the target and replaces it by the copy, synced.
  void put();

 private:
  template <typename Step>
  auto guarded(Step step);
  template <typename Look>
  void take(sqlite::Connection& source, Look look);

  std::string target_;
  std::optional<ReplacementFile> file_;
  std::string journal_;
};

// Writes a copy of the store at `from`, as it is committed at one moment whatever other processes
// do, and replaces the file `to` by it once it is complete and synced; the result is what the copy
// holds. Throws StoreError, and `to` is as it was: no store at `from`, both are the same file, a
// place that cannot be written, a copy that is not sound.
RecordCounts copyStore(const std::string& from, const std::string& to);

// How many records the store at that path holds, also one of an earlier version. Throws StoreError.
RecordCounts countsOfStore(const std::string& path);

}  // namespace ox
