#pragma once

#include <string>
#include <vector>

#include "ox/base/sqlite/database_form.hpp"

namespace ox::sqlite {

// Whether every page and tree of the file is whole, whatever its indexes say.
bool hasWholePages(Connection& file);

// Makes the missing indexes anew, and all of them where one does not agree with its table: indexes
// hold nothing that the tables do not. One sentence for what was done. For a file with whole pages;
// inside of a transaction.
std::vector<std::string> mendIndexes(Connection& file, const Schema& missing);

}  // namespace ox::sqlite
