#pragma once

#include <cstdint>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <string_view>

#include "ox/base/sqlite/row_sum.hpp"

// SQLite's own calls with just enough around them to be read. What SQLite refuses is thrown as
// std::runtime_error. One thread at a time.
namespace ox::bench::plain {

// A connection with the pragmas of the store, and with the function that its tables need.
class Database {
 public:
  explicit Database(const std::string& path) {
    check(sqlite3_open(path.c_str(), &handle_));
    check(sqlite::registerRowSum(handle_));
    run("PRAGMA page_size=4096");
    run("PRAGMA journal_mode=WAL");
    run("PRAGMA foreign_keys=ON; PRAGMA synchronous=NORMAL; PRAGMA cache_size=-65536;"
        "PRAGMA temp_store=MEMORY; PRAGMA wal_autocheckpoint=32768");
  }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database() { sqlite3_close(handle_); }

  void run(const char* sql) { check(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr)); }
  void check(int result) const {
    if (result != SQLITE_OK) throw std::runtime_error(sqlite3_errmsg(handle_));
  }
  sqlite3* handle() const { return handle_; }

 private:
  sqlite3* handle_ = nullptr;
};

// A prepared statement; the database has to outlive it.
class Query {
 public:
  Query(Database& database, const char* sql) : database_(database) {
    database.check(sqlite3_prepare_v2(database.handle(), sql, -1, &statement_, nullptr));
  }
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  ~Query() { sqlite3_finalize(statement_); }

  void bind(int index, std::int64_t number) { sqlite3_bind_int64(statement_, index, number); }
  void bindBlob(int index, const std::string& bytes) {
    sqlite3_bind_blob64(statement_, index, bytes.data(), bytes.size(), SQLITE_STATIC);
  }
  void bindText(int index, const std::string& text) {
    sqlite3_bind_text64(statement_, index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  }
  bool step() {
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) database_.check(result);
    return result == SQLITE_ROW;
  }
  void reset() { sqlite3_reset(statement_); }
  void finish() {
    step();
    reset();
  }
  std::int64_t number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string bytes(int column) const { return std::string(view(column)); }
  // Borrowed until the next step.
  std::string_view view(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    return {data == nullptr ? "" : data,
            static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
  }
  // Reads the bytes without keeping them.
  std::size_t size(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(statement_, column));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    return data != nullptr && size > 0 && data[size - 1] == '\0' ? size + 1 : size;
  }

 private:
  Database& database_;
  sqlite3_stmt* statement_ = nullptr;
};

}  // namespace ox::bench::plain
