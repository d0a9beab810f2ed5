#pragma once

#include <string>
#include <vector>

#include "ox/base/sqlite/database_form.hpp"

namespace ox::sqlite {

// Whether every page and tree of the file is whole, whatever its indexes say.
bool hasWholePages(Connection& file);

// Makes the missing indexes anew, and all of them where one does not agree with its table. One
// sentence for what was done. Nothing is done while a row of those tables is damaged (they tell by
// `sound`): then the index may be right, and hold what the row has lost. For a file with whole
// pages; inside of a transaction.
std::vector<std::string> mendIndexes(Connection& file, const Schema& missing,
                                     const std::vector<std::string>& tables);

}  // namespace ox::sqlite
