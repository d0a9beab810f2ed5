#include "tests/support/statement_count.hpp"

#include <atomic>
#include <sqlite3.h>
#include <string_view>

namespace ox::support {
namespace {

struct Counts {
  std::atomic<std::uint64_t> statements = 0;
  std::atomic<std::uint64_t> looks = 0;
};

Counts& counts() {
  static Counts counts;
  return counts;
}

// What a trigger or a cascade does within a statement is traced behind "--".
int traced(unsigned, void*, void*, void* text) {
  const std::string_view sql(static_cast<const char*>(text));
  if (sql.starts_with("--")) return 0;
  ++(sql == "PRAGMA data_version" ? counts().looks : counts().statements);
  return 0;
}

int opened(sqlite3* database, const char**, const void*) {
  return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, traced, nullptr);
}

}  // namespace

std::uint64_t statementsRun() {
  // Registering it again does nothing.
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(opened));
  return counts().statements;
}

std::uint64_t looksMade() {
  return counts().looks;
}

}  // namespace ox::support
