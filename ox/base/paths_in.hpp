#pragma once

#include <string>
#include <vector>

namespace ox {

// The paths of all that lies in a folder, in no order. Throws std::filesystem::filesystem_error.
// The standard library's own way through a folder ends the process where memory is short.
std::vector<std::string> pathsIn(const std::string& folder);

}  // namespace ox
