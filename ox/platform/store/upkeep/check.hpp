#pragma once

#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"

namespace ox {

// Everything that is wrong with the store at that path, one sentence each; empty when it is sound.
// Reads every row: the file's structure, every stored value and picture against its checksum, every
// link and container reference. Changes nothing. Throws StoreError when the store cannot be opened.
std::vector<std::string> storeProblems(const std::string& path);
// The same of an open store.
std::vector<std::string> problemsIn(sqlite::Connection& file);
// What was committed last may be missing from what is read of such a store.
bool hasDamagedLog(const sqlite::Connection& file);

}  // namespace ox
