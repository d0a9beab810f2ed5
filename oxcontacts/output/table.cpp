#include "oxcontacts/output/table.hpp"

#include <algorithm>
#include <iostream>

#include "ox/base/text/display_width.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

std::string shortened(const std::string& text, std::size_t columns) {
  if (displayWidth(text) <= columns) return text;
  return text.substr(0, frontOfWidth(text, columns - 1)) + "…";
}

}  // namespace

void Table::addRow(std::vector<std::string> cells) {
  cells.resize(columns_.size());
  for (auto& cell : cells) cell = terminalText(cell);
  for (std::size_t i = 0; i + 1 < cells.size(); ++i) cells[i] = shortened(cells[i], kWidestCell);
  rows_.push_back(std::move(cells));
}

std::string Table::lineOf(const std::vector<std::string>& cells,
                          const std::vector<std::size_t>& widths) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string blanks(widths[i] - displayWidth(cells[i]), ' ');
    if (i > 0) line += "  ";
    line += columns_[i].align == Align::Right ? blanks + cells[i] : cells[i] + blanks;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

void Table::print(const Context& context) const {
  std::vector<std::string> headings;
  std::vector<std::size_t> widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    headings.push_back(columns_[i].heading);
    widths.push_back(displayWidth(columns_[i].heading));
    for (const auto& row : rows_) widths[i] = std::max(widths[i], displayWidth(row[i]));
  }
  const bool color = context.usesColor();
  std::cout << (color ? "\x1b[1m" : "") << lineOf(headings, widths) << (color ? "\x1b[0m" : "")
            << '\n';
  for (const auto& row : rows_) std::cout << lineOf(row, widths) << '\n';
}

}  // namespace ox::program
