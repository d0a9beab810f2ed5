#include "ox/base/sqlite/row_sum.hpp"

#include <array>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <sqlite3.h>
#include <string_view>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/statement.hpp"

namespace ox::sqlite {
namespace {

// A number as it is, anything else as its checksum.
std::uint64_t wordOf(sqlite3_value* value, int type) {
  if (type == SQLITE_NULL) return 0;
  if (type == SQLITE_INTEGER) return static_cast<std::uint64_t>(sqlite3_value_int64(value));
  const auto* bytes = static_cast<const char*>(sqlite3_value_blob(value));
  const auto size = static_cast<std::size_t>(sqlite3_value_bytes(value));
  return checksum64(bytes != nullptr ? std::string_view(bytes, size) : std::string_view());
}

SummedColumn summed(sqlite3_value* value) {
  const int type = sqlite3_value_type(value);
  return {type, wordOf(value, type)};
}

void answerRowSum(sqlite3_context* context, int count, sqlite3_value** values) {
  std::array<SummedColumn, kMostSummedColumns> columns;
  const auto size = static_cast<std::size_t>(count);
  if (count < 0 || size > kMostSummedColumns) {
    sqlite3_result_error(context, "row_sum: too many columns", -1);
    return;
  }
  for (std::size_t i = 0; i < size; ++i) columns[i] = summed(values[i]);
  sqlite3_result_int(context, rowSum({columns.data(), size}));
}

}  // namespace

std::int32_t rowSum(std::span<const SummedColumn> columns) {
  constexpr std::size_t kBytes = 1 + sizeof(std::uint64_t);
  std::array<char, kBytes * kMostSummedColumns> bytes;
  assert(columns.size() <= kMostSummedColumns);
  auto* next = bytes.data();
  for (const auto& [type, word] : columns) {
    *next = static_cast<char>(type);
    std::memcpy(next + 1, &word, sizeof word);
    next += kBytes;
  }
  return static_cast<std::int32_t>(checksum64({bytes.data(), kBytes * columns.size()}));
}

bool isSound(const Statement& row, int columns) {
  std::array<SummedColumn, kMostSummedColumns> read;
  const auto size = static_cast<std::size_t>(columns);
  assert(size <= kMostSummedColumns);
  for (int i = 0; i < columns; ++i) {
    read[static_cast<std::size_t>(i)] = summed(sqlite3_column_value(row.statement_, i));
  }
  return rowSum({read.data(), size}) == row.integer(columns);
}

std::string withRowSums(std::string statements) {
  constexpr std::string_view kMark = "SUM(";
  for (auto mark = statements.find(kMark); mark != std::string::npos;
       mark = statements.find(kMark, mark)) {
    const auto end = statements.find(')', mark) + 1;
    const auto sum = "row_sum" + statements.substr(mark + 3, end - mark - 3);
    const auto columns = "checksum INTEGER NOT NULL AS (" + sum +
                         ") STORED,\n  sound INTEGER AS (checksum = " + sum + ") VIRTUAL";
    statements.replace(mark, end - mark, columns);
    mark += columns.size();
  }
  return statements;
}

int registerRowSum(sqlite3* database) {
  return sqlite3_create_function_v2(database, "row_sum", -1,
                                    SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr,
                                    answerRowSum, nullptr, nullptr, nullptr);
}

}  // namespace ox::sqlite
