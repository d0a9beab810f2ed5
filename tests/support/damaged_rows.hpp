#pragma once

#include <string>

namespace ox::support {

// Runs the statements on that database. The rows that they write are damaged: each bears a checksum
// that is not that of its columns.
void writeDamagedRows(const std::string& path, const std::string& sql);

}  // namespace ox::support
