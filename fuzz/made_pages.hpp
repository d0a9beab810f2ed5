#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ox::fuzz {

// A database file, laid out page by page as sqlite.org/fileformat2.html tells, from rows that an
// input gives: with their sums, where they are to have one, and over several pages, where one is
// too short. So a reader gets behind the checks that bytes of chance do not pass.
class MadePages {
 public:
  static constexpr std::size_t kPageBytes = 512;

  struct Column {
    enum class Type : std::uint8_t { Integer = 1, Text = 3, Blob = 4, Null = 5 } type = Type::Null;
    std::int64_t integer = 0;
    std::string bytes = {};
  };
  using Row = std::vector<Column>;

  MadePages();

  // The sum over the columns becomes the last one.
  enum class Sum : std::uint8_t { None, Of };
  void addToTable(std::int64_t number, Row row, Sum sum);
  void addToIndex(Row row, Sum sum);
  // What follows stands on other pages.
  void closePages() { table_ = index_ = 0; }
  // One that holds nothing, and stands in the list of those that are free.
  void addFree();
  // One that leads to all that were there before it.
  void addInterior();

  std::string file() const;
  // The log of so many last pages, each of which the file then lacks, of as many commits; the last
  // of the frames stands behind the last commit.
  std::string log(std::size_t pages, bool isCommitted) const;

 private:
  std::size_t addPage(char type);
  void addCell(std::size_t& page, char type, std::string_view start, const std::string& record);
  std::uint32_t addOverflow(std::string_view rest);

  std::vector<std::string> pages_;
  std::size_t table_ = 0;  // which page is being filled; 0: none
  std::size_t index_ = 0;
  std::uint32_t firstFree_ = 0;
};

}  // namespace ox::fuzz
