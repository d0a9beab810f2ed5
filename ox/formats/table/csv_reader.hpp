#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "ox/formats/text/text_source.hpp"

namespace ox::formats {

// One row of a table.
struct CsvRow {
  std::size_t line = 0;  // where it begins, from 1
  std::vector<std::string> cells;
  bool isCut = false;         // the file ends within quotes
  bool isTooLong = false;     // nothing of it is here
  bool hasStrayText = false;  // behind the closing quote of a cell

  bool isBlank() const;
};

// Reads rows of cells (RFC 4180): quotes around a cell, doubled within it, line breaks of any kind
// in quotes and between rows. The first row, which names the columns, tells whether commas,
// semicolons or tabs part the cells; "sep=;" in a line before it does as well. Memory is bounded by
// the longest row that is allowed.
class CsvReader {
 public:
  static constexpr std::size_t kMostBytes = 64U << 20U;

  // The source is borrowed.
  explicit CsvReader(TextSource& source) : source_(source) {}

  // False at the end. Rows without any text are passed over. Throws SourceError.
  bool next(CsvRow& row);
  char separator() const { return separator_; }

 private:
  bool readRow(CsvRow& row);
  void findSeparator();
  void readCell(CsvRow& row, std::string& cell);
  void readQuoted(CsvRow& row, std::string& cell);
  void takeBreak();
  void count(CsvRow& row);

  TextSource& source_;
  std::size_t line_ = 1;
  std::size_t bytes_ = 0;  // of the row
  char separator_ = '\0';  // not known yet
};

}  // namespace ox::formats
