#pragma once

#include <string>
#include <vector>

namespace ox {

// Everything that is wrong with the store at that path, one sentence each; empty when it is sound.
// Reads every row: the file's structure, every stored value and picture against its checksum, every
// link and container reference. Changes nothing. Throws StoreError when the store cannot be opened.
std::vector<std::string> storeProblems(const std::string& path);

}  // namespace ox
