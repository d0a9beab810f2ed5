#pragma once

#include <string>
#include <vector>

#include "ox/base/sqlite/database_form.hpp"

namespace ox::sqlite {

// Whether every page and tree of the file is whole, whatever its indexes say.
bool hasWholePages(Connection& file);

// Makes the missing indexes anew, and those of a table with which one does not agree. One sentence
// for what was done. Those that are there stay as they are while a row of one of the given tables
// is damaged (it tells by `sound`): then the index may be right, and hold what the row has lost. An
// index that allows no row twice is not made where one stands there twice. For a file with whole
// pages; inside of a transaction.
std::vector<std::string> mendIndexes(Connection& file, const Schema& missing,
                                     const std::vector<std::string>& toldByIndexes);

}  // namespace ox::sqlite
