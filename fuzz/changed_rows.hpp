#pragma once

#include <cstddef>
#include <map>
#include <span>
#include <string>
#include <utility>

#include "fuzz/input.hpp"
#include "ox/base/sqlite/connection.hpp"

namespace ox::fuzz {

struct Table {
  const char* name;
  const char* columns;  // the first one finds its rows
  int count;
};

// Those of a store of that version.
std::span<const Table> tablesOf(int version);

// A store of an earlier version, with something of everything in it.
const std::string& bytesOfVersion(int version);

// Changes rows of a store as an input tells. Borrows the database.
class RowChanges {
 public:
  RowChanges(sqlite::Connection& database, std::span<const Table> tables)
      : database_(database), tables_(tables) {}

  // Puts a row, takes one away, or changes one column of some; what the tables refuse is left out.
  // Answers which table it was.
  std::size_t changeOne(Input& input);

 private:
  sqlite::Connection& database_;
  std::span<const Table> tables_;
  std::map<std::pair<std::size_t, int>, sqlite::Statement> statements_;
};

}  // namespace ox::fuzz
