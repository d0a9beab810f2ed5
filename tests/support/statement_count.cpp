#include "tests/support/statement_count.hpp"

#include <atomic>
#include <sqlite3.h>
#include <string_view>

namespace ox::support {
namespace {

struct Counts {
  std::atomic<std::uint64_t> statements = 0;
  std::atomic<std::uint64_t> looks = 0;
  std::atomic<std::uint64_t> steps = 0;
};

Counts& counts() {
  static Counts counts;
  return counts;
}

// What a trigger or a cascade does within a statement is traced behind "--".
int traced(unsigned what, void*, void* statement, void* text) {
  if (what == SQLITE_TRACE_PROFILE) {
    constexpr int kStartAgain = 1;
    counts().steps += static_cast<std::uint64_t>(sqlite3_stmt_status(
        static_cast<sqlite3_stmt*>(statement), SQLITE_STMTSTATUS_VM_STEP, kStartAgain));
    return 0;
  }
  const std::string_view sql(static_cast<const char*>(text));
  if (sql.starts_with("--")) return 0;
  ++(sql == "PRAGMA data_version" ? counts().looks : counts().statements);
  return 0;
}

int opened(sqlite3* database, const char**, const void*) {
  return sqlite3_trace_v2(database, SQLITE_TRACE_STMT | SQLITE_TRACE_PROFILE, traced, nullptr);
}

}  // namespace

std::uint64_t statementsRun() {
  // Registering it again does nothing.
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(opened));
  return counts().statements;
}

std::uint64_t stepsTaken() {
  return counts().steps;
}

std::uint64_t looksMade() {
  return counts().looks;
}

}  // namespace ox::support
