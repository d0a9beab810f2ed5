#pragma once

#include <string>

namespace ox {

// The statements that made the tables of stores of earlier versions.
extern const char* const kTablesOfVersion1;
extern const char* const kTablesOfVersion2;
std::string tablesOfVersion3();

}  // namespace ox
