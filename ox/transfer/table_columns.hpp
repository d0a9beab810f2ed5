#pragma once

#include <string>
#include <vector>

#include "ox/base/export.hpp"

namespace ox::formats {

// A column of a table, and what its cells become, in words for the user.
struct ColumnUse {
  std::string column;
  std::string becomes;
};

// The columns of the table in that file, as an import takes them. Throws std::runtime_error, whose
// text names the file, when it is no such table or cannot be read.
OX_EXPORT std::vector<ColumnUse> tableColumns(const std::string& path);

}  // namespace ox::formats
