#pragma once

#include <string>

namespace ox {

inline constexpr int kSchemaVersion = 2;

// The statements that make the tables of a new store, and what is in them from the beginning.
std::string newTables();

// Those that make a store of that version one of the next; run in the transaction that changes the
// version.
std::string migrationFrom(int version);

}  // namespace ox
