#include "tests/support/statement_count.hpp"

#include <atomic>
#include <sqlite3.h>
#include <string_view>

namespace ox::support {
namespace {

std::atomic<std::uint64_t>& counter() {
  static std::atomic<std::uint64_t> count = 0;
  return count;
}

// What a trigger or a cascade does within a statement is traced behind "--".
int traced(unsigned, void*, void*, void* text) {
  const std::string_view sql(static_cast<const char*>(text));
  if (!sql.starts_with("--") && sql != "PRAGMA data_version") ++counter();
  return 0;
}

int opened(sqlite3* database, const char**, const void*) {
  return sqlite3_trace_v2(database, SQLITE_TRACE_STMT, traced, nullptr);
}

}  // namespace

std::uint64_t statementsRun() {
  // Registering it again does nothing.
  sqlite3_auto_extension(reinterpret_cast<void (*)()>(opened));
  return counter();
}

}  // namespace ox::support
