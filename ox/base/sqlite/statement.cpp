#include "ox/base/sqlite/statement.hpp"

#include <cassert>
#include <sqlite3.h>
#include <utility>

#include "ox/base/sqlite/error.hpp"

namespace ox::sqlite {
namespace {

// Used by assertions alone.
[[maybe_unused]] bool hasPlace(sqlite3_stmt* statement, int index) {
  return statement != nullptr && index >= 1 && index <= sqlite3_bind_parameter_count(statement);
}

// There is a row to read, with such a column.
[[maybe_unused]] bool hasColumn(sqlite3_stmt* statement, int column) {
  return statement != nullptr && column >= 0 && column < sqlite3_data_count(statement);
}

}  // namespace

Statement::Statement(sqlite3* database, std::string_view sql) {
  assert(database != nullptr && "the connection is open");
  const int result = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &statement_, nullptr);
  if (result != SQLITE_OK) {
    throw Error(sqlite3_extended_errcode(database), sqlite3_errmsg(database));
  }
  assert(statement_ != nullptr && "the text holds a statement");
}

Statement::Statement(Statement&& other) noexcept
    : statement_(std::exchange(other.statement_, nullptr)) {}

Statement& Statement::operator=(Statement&& other) noexcept {
  std::swap(statement_, other.statement_);
  return *this;
}

Statement::~Statement() {
  sqlite3_finalize(statement_);
}

void Statement::check(int result) const {
  if (result == SQLITE_OK) return;
  sqlite3* database = sqlite3_db_handle(statement_);
  throw Error(sqlite3_extended_errcode(database), sqlite3_errmsg(database));
}

Statement& Statement::bind(int index, std::int64_t number) {
  assert(hasPlace(statement_, index));
  check(sqlite3_bind_int64(statement_, index, number));
  return *this;
}

Statement& Statement::bindText(int index, TextView text) {
  if (!text) return bindNull(index);
  assert(hasPlace(statement_, index));
  // A null pointer would bind NULL: an empty text is a value.
  check(sqlite3_bind_text64(statement_, index, text->empty() ? "" : text->data(), text->size(),
                            SQLITE_STATIC, SQLITE_UTF8));
  return *this;
}

Statement& Statement::bindBlob(int index, std::string_view bytes) {
  assert(hasPlace(statement_, index));
  check(sqlite3_bind_blob64(statement_, index, bytes.empty() ? "" : bytes.data(), bytes.size(),
                            SQLITE_STATIC));
  return *this;
}

Statement& Statement::bindNull(int index) {
  assert(hasPlace(statement_, index));
  check(sqlite3_bind_null(statement_, index));
  return *this;
}

Statement& Statement::bindKeys(int index, const KeyList& keys) {
  assert(hasPlace(statement_, index));
  // SQLite takes the pointer without const; the table only reads.
  check(sqlite3_bind_pointer(statement_, index, const_cast<KeyList*>(&keys), kKeyListPointer,
                             nullptr));
  return *this;
}

bool Statement::step() {
  assert(statement_ != nullptr);
  const int result = sqlite3_step(statement_);
  if (result == SQLITE_ROW) return true;
  if (result == SQLITE_DONE) return false;
  sqlite3* database = sqlite3_db_handle(statement_);
  const Error error(sqlite3_extended_errcode(database), sqlite3_errmsg(database));
  sqlite3_reset(statement_);
  throw error;
}

void Statement::run() {
  while (step()) {
  }
  reset();
}

void Statement::reset() {
  sqlite3_reset(statement_);
}

bool Statement::isNull(int column) const {
  return columnType(column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
  assert(hasColumn(statement_, column));
  return sqlite3_column_int64(statement_, column);
}

std::string_view Statement::text(int column) const {
  assert(hasColumn(statement_, column));
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  if (bytes == nullptr) return {};
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

std::string_view Statement::blob(int column) const {
  assert(hasColumn(statement_, column));
  const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement_, column));
  if (bytes == nullptr) return {};
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column))};
}

Text Statement::optionalText(int column) const {
  if (isNull(column)) return std::nullopt;
  return std::string(text(column));
}

int Statement::columnType(int column) const {
  assert(hasColumn(statement_, column));
  return sqlite3_column_type(statement_, column);
}

}  // namespace ox::sqlite
