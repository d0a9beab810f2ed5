#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

struct sqlite3;

namespace ox::sqlite {

class Statement;

// SQLite does not notice a changed byte inside of a row. So tables keep a checksum of the columns
// of each row: where the statements that make them say `SUM(id, name)` among the columns, this puts
// two
//
//   checksum INTEGER NOT NULL AS (row_sum(id, name)) STORED,
//   sound INTEGER AS (checksum = row_sum(id, name)) VIRTUAL
//
// of which SQLite writes the first with every row and works out the second when it is asked for.
// Another tool can read such a table, but not write into it.
std::string withRowSums(std::string statements);

// A column as the sum sees it: the number of its type as SQLite counts them, and a number as it is,
// anything else as its checksum (0 for none).
struct SummedColumn {
  int type;
  std::uint64_t word;
};
std::int32_t rowSum(std::span<const SummedColumn> columns);

inline constexpr std::size_t kMostSummedColumns = 20;

// Whether a row of so many summed columns, and behind them its checksum, is sound: what `sound`
// tells, at half of its price, for rows of which very many are read.
bool isSound(const Statement& row, int columns);

// For the connection alone: makes the function row_sum(value, ...) known. The sum is 32 bits of
// XXH3, so that it takes four bytes of the row; a value that became one of another type differs
// too. The result is SQLite's.
int registerRowSum(sqlite3* database);

}  // namespace ox::sqlite
