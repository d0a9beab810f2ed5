#include "ox/formats/table/csv_reader.hpp"

#include <gtest/gtest.h>

namespace ox::formats_tests {
namespace {

using namespace std::string_literals;
using formats::CsvReader;
using formats::CsvRow;

// Every row as "line: [cell][cell]", with what is wrong behind it.
std::string rowsOf(std::string_view bytes) {
  vcard::MemorySource source(bytes);
  formats::TextSource text(source);
  CsvReader reader(text);
  CsvRow row;
  std::string rows;
  while (reader.next(row)) {
    rows += std::to_string(row.line) + ": ";
    for (const auto& cell : row.cells) rows += "[" + cell + "]";
    if (row.isCut) rows += " cut";
    if (row.isTooLong) rows += " too long";
    if (row.hasStrayText) rows += " stray";
    rows += "\n";
  }
  return rows;
}

struct Row {
  std::string bytes;
  std::string rows;
};

TEST(CsvReader, PartsRowsAndCells) {
  const Row rows[] = {
      {"", ""},
      {"a,b\r\n1,2\r\n", "1: [a][b]\n2: [1][2]\n"},
      {"a,b\n1,2", "1: [a][b]\n2: [1][2]\n"},
      {"a,b\r1,2\r", "1: [a][b]\n2: [1][2]\n"},
      {"a;b,c;d\n1;2", "1: [a][b,c][d]\n2: [1][2]\n"},
      {"a\tb\n1,5\t2", "1: [a][b]\n2: [1,5][2]\n"},
      {"sep=;\r\na,b;c", "2: [a,b][c]\n"},
      {"a,,\n,,\n,x,", "1: [a][][]\n3: [][x][]\n"},
      {"\n\na,b\n", "3: [a][b]\n"},
      {"\"a;b;c\",d\n", "1: [a;b;c][d]\n"},
      {"a,b\n\"x,\"\"y\"\"\",2\n", "1: [a][b]\n2: [x,\"y\"][2]\n"},
      {"a,b\n\"one\r\ntwo\",2\n3,4", "1: [a][b]\n2: [one\r\ntwo][2]\n4: [3][4]\n"},
      {"a,b\n\"one\rtwo\",2\n3,4", "1: [a][b]\n2: [one\rtwo][2]\n4: [3][4]\n"},
      {"a,b\nx\"y,2\n", "1: [a][b]\n2: [x\"y][2]\n"},
      {"a,b\n\"x\" y,2\n", "1: [a][b]\n2: [x y][2] stray\n"},
      {"a,b\n1,\"two\n3,4\n", "1: [a][b]\n2: [1][two\n3,4\n] cut\n"},
      {"a,b\n1,\"\"", "1: [a][b]\n2: [1][]\n"},
  };
  for (const auto& [bytes, expected] : rows) EXPECT_EQ(rowsOf(bytes), expected) << bytes;
}

TEST(CsvReader, ReadsTheEncodingsOfSpreadsheets) {
  EXPECT_EQ(rowsOf("\xEF\xBB\xBF\"Zoë\",b\n"), "1: [Zoë][b]\n");
  EXPECT_EQ(rowsOf("\xFF\xFEZ\0o\0\xEB\0,\0b\0\n\0001\0,\0002\0"s), "1: [Zoë][b]\n2: [1][2]\n");
  EXPECT_EQ(rowsOf("name,town\nJ\xF6rg M\xFCller,K\xF6ln\nZo\xEB,Stra\xDF"
                   "burg\n"),
            "1: [name][town]\n2: [Jörg Müller][Köln]\n3: [Zoë][Straßburg]\n");
}

TEST(CsvReader, HoldsNothingOfARowThatIsTooLong) {
  auto bytes = "a,b\n1,\"" + std::string(CsvReader::kMostBytes, 'x') + "\"\n3,4\n";
  EXPECT_EQ(rowsOf(bytes), "1: [a][b]\n2:  too long\n3: [3][4]\n");
}

}  // namespace
}  // namespace ox::formats_tests
