#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/act.hpp"

namespace ox {

// Writes what one act notes of accounts that are in step with others. Borrows all that it is given.
// Throws sqlite::Error, and RefusedRequest where a row that is to be replaced is not there, or
// another one has the name or the path.
class SyncWriter {
 public:
  // Of new records and containers the act knows no rows yet: these tell which they have.
  struct Rows {
    std::function<std::int64_t(std::int64_t)> record;
    std::function<std::int32_t(std::int32_t)> container;
  };
  SyncWriter(StoreFile& file, const Act::NotedSync& sync, const Rows& rows)
      : file_(file), sync_(sync), rows_(rows) {}
  SyncWriter(const SyncWriter&) = delete;
  SyncWriter& operator=(const SyncWriter&) = delete;

  void write();

 private:
  std::int32_t containerOf(const std::string& identifier) const;
  void remove();
  void write(const SyncLogin& login);
  void write(const SyncRows::BookOfLogin& book);
  void write(const SyncCardChange& change, std::optional<std::int64_t> record);
  void write(std::int64_t card, const SyncCard::Texts& texts);
  void write(const SyncConflict& conflict);
  void write(const SyncRun& run);
  // Runs the statement, which changes one row.
  void runOnce(sqlite::Statement& statement, const std::string& otherwise);

  StoreFile& file_;
  const Act::NotedSync& sync_;
  const Rows& rows_;
};

}  // namespace ox
