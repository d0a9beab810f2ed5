#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "oxcontacts/context.hpp"

namespace ox::program {

// Rows of text under headings, printed in columns that fit any script. Where the output is a
// terminal the lines fit it: columns for which there is no room are left out, then texts that may
// be cut are, then the last columns go. Elsewhere only very long texts are cut, those of the last
// column never.
class Table {
 public:
  enum class Align : std::uint8_t { Left, Right };
  enum class Room : std::uint8_t {
    Whole,    // shown whole: numbers, dates, what a command is to be given
    MayCut,   // cut where the line is too short
    MayLack,  // left out where the line is too short
  };
  struct Column {
    std::string heading;
    Align align = Align::Left;
    Room room = Room::Whole;
  };

  explicit Table(std::vector<Column> columns) : columns_(std::move(columns)) {}

  void addRow(std::vector<std::string> cells);
  // A line of its own above the rows that follow.
  void addHeading(const std::string& text);
  void print(const Context& context) const;

 private:
  static constexpr std::size_t kWidestCell = 60;

  struct Row {
    std::string heading;  // of the rows below; empty: none begins here
    std::vector<std::string> cells;
  };
  // The width of each column; missing for one that is left out.
  using Widths = std::vector<std::optional<std::size_t>>;

  Widths naturalWidths() const;
  Widths widthsFor(std::size_t columns) const;
  std::string lineOf(const std::vector<std::string>& cells, const Widths& widths) const;

  std::vector<Column> columns_;
  std::vector<Row> rows_;
  std::string heading_;
};

}  // namespace ox::program
