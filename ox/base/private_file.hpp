#pragma once

#include <string>

namespace ox {

// Makes the file, empty and for this user alone (0600), with the missing folders above it (0700),
// and syncs the folder that received it. A file that exists is left as it is. True when it was
// made; throws std::system_error naming the path, also where another user leads it elsewhere
// (ox/base/planted.hpp).
bool createPrivateFile(const std::string& path);

}  // namespace ox
