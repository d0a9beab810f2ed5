#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/base/sqlite/page_file.hpp"

namespace ox::sqlite {

// A row as it stands on a page. Its columns are borrowed from it.
class PageRow {
 public:
  // As SQLite counts them.
  enum class Type : std::uint8_t { Integer = 1, Real = 2, Text = 3, Blob = 4, Null = 5 };
  struct Column {
    Type type = Type::Null;
    std::int64_t integer = 0;
    std::string_view bytes;  // of a text or a blob
  };

  // Missing when those bytes are no record.
  static std::optional<PageRow> of(std::int64_t number, std::string record);
  PageRow(PageRow&& other) noexcept = default;
  PageRow& operator=(PageRow&& other) noexcept = default;

  std::int64_t number() const { return number_; }  // 0 in a table without row numbers
  std::size_t size() const { return columns_.size(); }
  const Column& operator[](std::size_t column) const { return columns_[column]; }
  bool is(std::size_t column, Type type) const { return columns_[column].type == type; }
  // Whether its last column is the sum (row_sum.hpp) of so many first ones.
  bool hasSumOf(std::size_t columns) const;

 private:
  PageRow() = default;

  std::int64_t number_ = 0;
  std::unique_ptr<const std::string> record_;  // stays where it is when the row is moved
  std::vector<Column> columns_;
};

// Where a row stands, to read it again by.
struct RowPlace {
  std::uint32_t page = 0;
  std::uint32_t offset = 0;

  bool operator==(const RowPlace&) const = default;
};

// Reads the rows that stand on single pages, without the trees that lead to them. Borrows the file.
// Used by one thread at a time.
class PageRows {
 public:
  enum class Form : std::uint8_t { Table, Index };

  explicit PageRows(PageFile& file)
      : file_(file),
        overflow_(file.count() + std::size_t{1}),
        readings_(file.count() + std::size_t{1}) {}

  // What a page is, by its first byte and the list of its cells; missing for one that holds no
  // rows.
  std::optional<Form> formOf(std::uint32_t page);
  using Visit = std::function<void(const RowPlace&, const PageRow&)>;
  // The rows of that page by the list of its cells. False when some of that list led nowhere. Of
  // rows that go on on the same other page only the first few are read, here and anywhere, so that
  // all pages together take a few times the file, whatever they lead to.
  bool listed(std::uint32_t page, Form form, const Visit& visit);
  // Whatever can be read as a row of a table anywhere on that page: rows, what was rows once, and
  // what only looks like one. For whoever knows a row by its sum.
  void anywhere(std::uint32_t page, const Visit& visit);
  std::optional<PageRow> at(const RowPlace& place, Form form = Form::Table);
  // Whether a row that was listed goes on on that page.
  bool isOverflow(std::uint32_t page) const { return overflow_[page]; }

 private:
  // Whether the row was found before, so that nothing limits it any more.
  enum class Reading : std::uint8_t { First, Again };

  std::optional<PageRow> rowIn(const std::string& page, std::uint32_t offset, Form form,
                               Reading reading);
  std::optional<std::string> goneOn(std::string begun, std::uint32_t next, std::uint64_t size,
                                    Reading reading);

  PageFile& file_;
  std::vector<bool> overflow_;
  std::vector<std::uint8_t> readings_;       // how often a page was read as the rest of a row
  std::vector<std::uint32_t> furtherPages_;  // of the row that was read last
};

}  // namespace ox::sqlite
