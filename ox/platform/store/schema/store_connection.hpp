#pragma once

#include <optional>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/schema/sync_anchor.hpp"

namespace ox {

// The connection to a store file. Where it is the last one of all processes, SQLite brings the log
// into the file when it is closed, and what was noted beside the log goes with it. A store that
// lacks an act that was noted keeps both, unless this connection has written: behind what is
// believed of the log there may be something for whoever recovers. Used by one thread at a time;
// statements must go before it does.
class StoreConnection {
 public:
  StoreConnection() = default;
  explicit StoreConnection(sqlite::Connection file);
  StoreConnection(StoreConnection&& other) noexcept;
  StoreConnection& operator=(StoreConnection&& other) noexcept;
  ~StoreConnection();

  bool isOpen() const { return file_.handle() != nullptr; }
  // Not in a process that was forked since it was opened.
  bool isOpenHere() const;
  sqlite::Connection& file() { return file_; }
  const sqlite::Connection& file() const { return file_; }
  // Of the open file.
  const SyncAnchor& anchor() const { return *anchor_; }

  // Nothing where it is not open here.
  void close() noexcept;

 private:
  struct Looked {
    bool mayGo = false;
    std::optional<SyncedAct> noted;
  };

  Looked lookAtNote() noexcept;

  sqlite::Connection file_;
  std::optional<SyncAnchor> anchor_;
  int openedBy_ = 0;  // the process
};

}  // namespace ox
