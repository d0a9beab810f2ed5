#include "tests/support/damaged_rows.hpp"

#include <sqlite3.h>

#include "ox/base/sqlite/connection.hpp"

namespace ox::support {

void writeDamagedRows(const std::string& path, const std::string& sql) {
  sqlite::Connection file(path, sqlite::Connection::Mode::ReadWrite);
  const auto wrongSum = [](sqlite3_context* context, int /*count*/, sqlite3_value** /*columns*/) {
    sqlite3_result_int(context, 7);
  };
  sqlite3_create_function(file.handle(), "row_sum", -1,
                          SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr, wrongSum,
                          nullptr, nullptr);
  file.execute(sql.c_str());
}

}  // namespace ox::support
