#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/sqlite/database_form.hpp"

namespace ox {

// "OxAB": tells a contact store from any other SQLite file.
inline constexpr int kStoreApplicationId = 0x4F784142;

using sqlite::MissingIndexes;

// The version of the tables of the store; 0 for an empty file. Looks at the schema alone, and
// compares it with that version's word by word, so that nothing in it is run that is not ours.
// Throws StoreError naming the file and what is wrong with it: a foreign or newer file, a thing in
// the schema that does not belong there, is missing or made otherwise. Earlier versions need no
// indexes: all are made anew when they are brought up to date.
int versionOf(sqlite::Connection& database, const std::string& path,
              MissingIndexes missing = MissingIndexes::Refuse);

// The indexes that such a store lacks, with the statements that make them.
sqlite::Schema missingIndexesOf(sqlite::Connection& database);

}  // namespace ox
