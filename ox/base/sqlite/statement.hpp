#pragma once

#include <cstdint>
#include <string_view>

#include "ox/base/sqlite/key_list.hpp"
#include "ox/base/text.hpp"

struct sqlite3;
struct sqlite3_stmt;

namespace ox::sqlite {

// One prepared statement. Belongs to its connection, used by one thread at a time. Texts and blobs
// are bound without a copy: what was bound must live until reset or the next bind.
class Statement {
 public:
  Statement() = default;
  Statement(sqlite3* database, std::string_view sql);
  Statement(Statement&& other) noexcept;
  Statement& operator=(Statement&& other) noexcept;
  ~Statement();

  Statement& bind(int index, std::int64_t number);
  Statement& bindText(int index, TextView text);  // missing binds NULL
  Statement& bindBlob(int index, std::string_view bytes);
  Statement& bindNull(int index);
  // The list is borrowed as texts are.
  Statement& bindKeys(int index, const KeyList& keys);

  // True with a row to read, false when the statement is done. Throws Error.
  bool step();
  // Steps to the end and resets: for statements that give no rows.
  void run();
  void reset();

  bool isNull(int column) const;
  std::int64_t integer(int column) const;
  // Borrowed until the next step or reset.
  std::string_view text(int column) const;
  std::string_view blob(int column) const;
  Text optionalText(int column) const;
  // 1 integer, 2 real, 3 text, 4 blob, 5 null.
  int columnType(int column) const;

  explicit operator bool() const { return statement_ != nullptr; }

 private:
  friend bool isSound(const Statement& row, int columns);  // see row_sum.hpp
  void check(int result) const;

  sqlite3_stmt* statement_ = nullptr;
};

// Resets the statement when a reader leaves its scope, so that no read transaction stays open.
class StatementScope {
 public:
  explicit StatementScope(Statement& statement) : statement_(statement) {}
  StatementScope(const StatementScope&) = delete;
  StatementScope& operator=(const StatementScope&) = delete;
  ~StatementScope() { statement_.reset(); }
  Statement* operator->() { return &statement_; }

 private:
  Statement& statement_;
};

}  // namespace ox::sqlite
