#pragma once

#include <string>
#include <vector>

#include "oxcontacts/context.hpp"

namespace ox::program {

// Rows of text under headings, printed in columns that fit any script. Long cells are cut, those of
// the last column are not.
class Table {
 public:
  enum class Align : std::uint8_t { Left, Right };
  struct Column {
    std::string heading;
    Align align = Align::Left;
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  void addRow(std::vector<std::string> cells);
  void print(const Context& context) const;

 private:
  static constexpr std::size_t kWidestCell = 60;

  std::string lineOf(const std::vector<std::string>& cells,
                     const std::vector<std::size_t>& widths) const;

  std::vector<Column> columns_;
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace ox::program
