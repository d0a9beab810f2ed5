#include "oxcontacts/output/table.hpp"

#include <algorithm>
#include <iostream>

#include "ox/base/text/display_width.hpp"
#include "oxcontacts/output/terminal_text.hpp"
#include "oxcontacts/output/terminal_width.hpp"

namespace ox::program {
namespace {

constexpr std::size_t kGap = 2;
// A name cut to fewer columns tells nobody apart.
constexpr std::size_t kNarrowest = 10;

std::string shortened(const std::string& text, std::size_t columns) {
  if (displayWidth(text) <= columns) return text;
  return text.substr(0, frontOfWidth(text, columns - 1)) + "…";
}

std::size_t lineWidth(const std::vector<std::optional<std::size_t>>& widths) {
  std::size_t line = 0;
  for (const auto& width : widths) {
    if (width) line += *width + (line > 0 ? kGap : 0);
  }
  return line;
}

}  // namespace

void Table::addRow(std::vector<std::string> cells) {
  cells.resize(columns_.size());
  for (auto& cell : cells) cell = terminalText(cell);
  for (std::size_t i = 0; i + 1 < cells.size(); ++i) cells[i] = shortened(cells[i], kWidestCell);
  rows_.push_back({std::move(heading_), std::move(cells)});
  heading_.clear();
}

void Table::addHeading(const std::string& text) {
  heading_ = terminalText(text);
}

std::string Table::lineOf(const std::vector<std::string>& cells, const Widths& widths) const {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    if (!widths[i]) continue;
    const auto cell = columns_[i].room == Room::MayCut ? shortened(cells[i], *widths[i]) : cells[i];
    const std::string blanks(*widths[i] - displayWidth(cell), ' ');
    if (!line.empty() || (i > 0 && widths[0])) line += std::string(kGap, ' ');
    line += columns_[i].align == Align::Right ? blanks + cell : cell + blanks;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

Table::Widths Table::naturalWidths() const {
  Widths widths;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    auto width = displayWidth(columns_[i].heading);
    for (const auto& row : rows_) width = std::max(width, displayWidth(row.cells[i]));
    widths.emplace_back(width);
  }
  return widths;
}

Table::Widths Table::widthsFor(std::size_t columns) const {
  auto widths = naturalWidths();
  for (std::size_t i = widths.size(); i-- > 0 && lineWidth(widths) > columns;) {
    if (columns_[i].room == Room::MayLack) widths[i].reset();
  }
  for (std::size_t last = widths.size(); lineWidth(widths) > columns;) {
    std::optional<std::size_t> widest;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const bool cuts = widths[i] && columns_[i].room == Room::MayCut && *widths[i] > kNarrowest;
      if (cuts && (!widest || *widths[i] > *widths[*widest])) widest = i;
    }
    if (widest) {
      --*widths[*widest];
    } else if (last > 1 && std::ranges::any_of(columns_, [](const Column& column) {
                 return column.room == Room::MayCut;
               })) {
      // What remains is the front of the line, which says whom the rest was about.
      widths[--last].reset();
    } else {
      break;
    }
  }
  return widths;
}

void Table::print(const Context& context) const {
  std::vector<std::string> headings;
  headings.reserve(columns_.size());
  for (const auto& column : columns_) headings.push_back(column.heading);
  const auto room = outputColumns();
  const auto widths = room ? widthsFor(*room) : naturalWidths();
  const bool color = context.usesColor();
  const auto bold = [&](const std::string& line) {
    return (color ? "\x1b[1m" : "") + line + (color ? "\x1b[0m" : "");
  };
  std::cout << bold(lineOf(headings, widths)) << '\n';
  for (const auto& row : rows_) {
    if (!row.heading.empty()) std::cout << bold(row.heading) << '\n';
    std::cout << lineOf(row.cells, widths) << '\n';
  }
}

}  // namespace ox::program
