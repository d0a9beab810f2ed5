#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"

namespace ox {

// Everything that is wrong with the store at that path, one sentence each; empty when it is sound.
// Reads every row: the file's structure, every stored value and picture against its checksum, every
// link and container reference, and whether it has every act that was synced. Changes nothing.
// Throws StoreError when the store cannot be opened.
std::vector<std::string> storeProblems(const std::string& path);
// The same of an open store, by what stands in it alone.
std::vector<std::string> problemsIn(sqlite::Connection& file);
// What was committed last may be missing from what is read of such a store.
bool hasDamagedLog(const sqlite::Connection& file);
// The sentence that tells of an act which was synced and is not there (schema/sync_anchor.hpp).
// Throws std::system_error and sqlite::Error.
std::optional<std::string> missingActOf(sqlite::Connection& file);

}  // namespace ox
