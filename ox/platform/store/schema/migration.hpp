#pragma once

#include "ox/base/sqlite/connection.hpp"

namespace ox {

// Makes the tables of a store of an earlier version those of this one, with everything that is in
// them; to be called in the transaction that changes the version.
void migrateTables(sqlite::Connection& file, int from);

}  // namespace ox
