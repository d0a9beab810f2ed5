#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "ox/base/sqlite/statement.hpp"

namespace ox::sqlite {

// One open database file. Used by one thread at a time; statements must go before it does.
class Connection {
 public:
  enum class Mode { ReadWriteCreate, ReadWrite, ReadOnly };

  Connection() = default;
  // Throws Error naming the file. Extended result codes are on, SQLite's defensive mode is, and the
  // schema of the file is not trusted; foreign keys are not on yet.
  Connection(const std::string& path, Mode mode);
  Connection(Connection&& other) noexcept;
  Connection& operator=(Connection&& other) noexcept;
  ~Connection();

  void execute(const char* sql);
  Statement prepare(std::string_view sql) { return {handle_, sql}; }
  // The first column of the first row; 0 or missing when there is no row.
  std::int64_t queryInteger(std::string_view sql);
  Text queryText(std::string_view sql);
  void setBusyTimeout(int milliseconds);
  std::int64_t lastRowId() const;
  std::int64_t changes() const;
  // Rows changed since the file was opened, those of transactions that were rolled back too.
  std::int64_t totalChanges() const;
  bool isInTransaction() const;
  // Of which every connection holds a statement, so that none needs memory to end what it began.
  enum class Transition : std::uint8_t { Begin, BeginWriting, Commit, RollBack };
  void run(Transition transition);
  // Ends a transaction, if there is one.
  void rollBack() noexcept;
  // The log stays where it is when the last connection to the file is closed, as this one may be.
  void keepLog();
  // The file itself, through every link that led to it, and where SQLite keeps the write-ahead log
  // of this database, beside it.
  std::string filePath() const;
  std::string logPath() const;
  sqlite3* handle() const { return handle_; }

 private:
  int makeReady();
  int step(Transition transition) noexcept;

  sqlite3* handle_ = nullptr;
  std::array<sqlite3_stmt*, 4> transitions_{};
};

// An immediate write transaction: rolled back unless committed.
class Transaction {
 public:
  explicit Transaction(Connection& connection);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();
  // Throws Error; the transaction is then rolled back.
  void commit();

 private:
  Connection& connection_;
  bool open_ = true;
};

// While it lives, everything that is read is of one state of the file. Nothing happens inside of a
// transaction, where that is so already.
class Snapshot {
 public:
  explicit Snapshot(Connection& connection);
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;
  ~Snapshot();

 private:
  Connection* connection_ = nullptr;  // null inside of a transaction
};

}  // namespace ox::sqlite
