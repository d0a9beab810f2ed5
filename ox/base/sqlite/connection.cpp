#include "ox/base/sqlite/connection.hpp"

#include <array>
#include <cassert>
#include <cstddef>
#include <exception>
#include <span>
#include <sqlite3.h>
#include <tuple>
#include <utility>

#include "ox/base/sqlite/error.hpp"
#include "ox/base/sqlite/key_list.hpp"
#include "ox/base/sqlite/row_sum.hpp"

namespace ox::sqlite {
namespace {

int openFlags(Connection::Mode mode) {
  switch (mode) {
    case Connection::Mode::ReadWriteCreate:
      return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    case Connection::Mode::ReadWrite:
      return SQLITE_OPEN_READWRITE;
    case Connection::Mode::ReadOnly:
      return SQLITE_OPEN_READONLY;
  }
  return SQLITE_OPEN_READONLY;
}

// Nothing that stands in the schema of a file is trusted: what it asks for may reach no function
// that does more than work something out, and no statement may change the schema behind SQLite's
// back.
int trustNoSchema(sqlite3* database) {
  const int result = sqlite3_db_config(database, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  if (result != SQLITE_OK) return result;
  return sqlite3_db_config(database, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
}

void finalizeAll(std::span<sqlite3_stmt* const> statements) {
  for (auto* statement : statements) sqlite3_finalize(statement);
}

}  // namespace

Connection::Connection(const std::string& path, Mode mode) {
  const int flags = openFlags(mode) | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
  // Some builds take a name that begins so for a URI, with all that one can ask for.
  const auto name = path.starts_with("file:") ? "./" + path : path;
  int result = sqlite3_open_v2(name.c_str(), &handle_, flags, nullptr);
  if (result == SQLITE_OK) result = makeReady();
  if (result == SQLITE_OK) return;
  const Error error(result, path + ": " + (handle_ ? sqlite3_errmsg(handle_) : "out of memory"));
  finalizeAll(transitions_);
  sqlite3_close(std::exchange(handle_, nullptr));
  throw error;
}

int Connection::makeReady() {
  int result = trustNoSchema(handle_);
  if (result == SQLITE_OK) result = registerKeyLists(handle_);
  if (result == SQLITE_OK) result = registerRowSum(handle_);
  constexpr std::array kTransitions{"BEGIN", "BEGIN IMMEDIATE", "COMMIT", "ROLLBACK"};
  static_assert(kTransitions.size() == std::tuple_size_v<decltype(transitions_)>);
  for (std::size_t i = 0; result == SQLITE_OK && i < kTransitions.size(); ++i) {
    result = sqlite3_prepare_v3(handle_, kTransitions[i], -1, SQLITE_PREPARE_PERSISTENT,
                                &transitions_[i], nullptr);
  }
  return result;
}

Connection::Connection(Connection&& other) noexcept
    : handle_(std::exchange(other.handle_, nullptr)),
      transitions_(std::exchange(other.transitions_, {})) {}

Connection& Connection::operator=(Connection&& other) noexcept {
  std::swap(handle_, other.handle_);
  std::swap(transitions_, other.transitions_);
  return *this;
}

Connection::~Connection() {
  finalizeAll(transitions_);
  [[maybe_unused]] const int result = sqlite3_close(handle_);
  assert(result == SQLITE_OK && "every statement went before its connection");
}

void Connection::execute(const char* sql) {
  assert(handle_ != nullptr);
  if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
    throw Error(sqlite3_extended_errcode(handle_), sqlite3_errmsg(handle_));
  }
}

std::int64_t Connection::queryInteger(std::string_view sql) {
  auto statement = prepare(sql);
  return statement.step() ? statement.integer(0) : 0;
}

Text Connection::queryText(std::string_view sql) {
  auto statement = prepare(sql);
  return statement.step() ? statement.optionalText(0) : std::nullopt;
}

void Connection::setBusyTimeout(int milliseconds) {
  sqlite3_busy_timeout(handle_, milliseconds);
}

std::int64_t Connection::lastRowId() const {
  return sqlite3_last_insert_rowid(handle_);
}

std::int64_t Connection::changes() const {
  return sqlite3_changes64(handle_);
}

std::int64_t Connection::totalChanges() const {
  return sqlite3_total_changes64(handle_);
}

bool Connection::isInTransaction() const {
  return sqlite3_get_autocommit(handle_) == 0;
}

int Connection::step(Transition transition) noexcept {
  auto* const statement = transitions_.at(static_cast<std::size_t>(transition));
  sqlite3_step(statement);
  return sqlite3_reset(statement);
}

void Connection::run(Transition transition) {
  if (step(transition) == SQLITE_OK) return;
  throw Error(sqlite3_extended_errcode(handle_), sqlite3_errmsg(handle_));
}

void Connection::rollBack() noexcept {
  // SQLite may have rolled back by itself (a full disk, an I/O error).
  if (isInTransaction()) step(Transition::RollBack);
}

void Connection::keepLog() {
  sqlite3_db_config(handle_, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

std::string Connection::filePath() const {
  return sqlite3_db_filename(handle_, "main");
}

std::string Connection::logPath() const {
  return sqlite3_filename_wal(sqlite3_db_filename(handle_, "main"));
}

Transaction::Transaction(Connection& connection) : connection_(connection) {
  connection_.run(Connection::Transition::BeginWriting);
}

Transaction::~Transaction() {
  if (open_) connection_.rollBack();
}

void Transaction::commit() {
  assert(open_ && "a transaction is committed once");
  open_ = false;
  try {
    connection_.run(Connection::Transition::Commit);
  } catch (...) {
    connection_.rollBack();
    throw;
  }
}

Snapshot::Snapshot(Connection& connection) {
  if (connection.isInTransaction()) return;
  connection.run(Connection::Transition::Begin);
  connection_ = &connection;
}

Snapshot::~Snapshot() {
  if (connection_ == nullptr) return;
  try {
    connection_->run(Connection::Transition::Commit);
  } catch (const std::exception&) {
    connection_->rollBack();  // nothing was written
  }
}

}  // namespace ox::sqlite
