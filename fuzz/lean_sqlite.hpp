#pragma once

#include <sqlite3.h>

namespace ox::fuzz {

// No count of the memory in use, which costs a lock for every allocation. To be called before the
// first database is opened.
inline void makeSqliteLean() {
  ::sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

}  // namespace ox::fuzz
