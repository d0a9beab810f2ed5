#include "ox/formats/table/csv_reader.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace ox::formats {
namespace {

constexpr std::array kSeparators = {',', ';', '\t'};

// The separator that stands most often in the first row, quoted cells aside.
char mostFrequent(std::string_view text) {
  std::array<std::size_t, kSeparators.size()> counts{};
  bool quoted = false;
  for (const char c : text) {
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '\n' || c == '\r') break;
    const auto* known = std::ranges::find(kSeparators, c);
    if (known != kSeparators.end()) ++counts[static_cast<std::size_t>(known - kSeparators.begin())];
  }
  return kSeparators[static_cast<std::size_t>(std::ranges::max_element(counts) - counts.begin())];
}

}  // namespace

bool CsvRow::isBlank() const {
  return !isCut && !isTooLong && std::ranges::all_of(cells, [](const std::string& cell) {
    return cell.find_first_not_of(" \t") == std::string::npos;
  });
}

void CsvReader::findSeparator() {
  constexpr std::string_view kHint = "sep=";
  auto front = source_.ahead();
  const bool isHint = front.size() > kHint.size() + 1 && front.starts_with(kHint) &&
                      (front[kHint.size() + 1] == '\r' || front[kHint.size() + 1] == '\n');
  if (!isHint) {
    separator_ = mostFrequent(front);
    return;
  }
  separator_ = front[kHint.size()];
  source_.skip(kHint.size() + 1);
  takeBreak();
}

bool CsvReader::next(CsvRow& row) {
  if (separator_ == '\0') findSeparator();
  while (readRow(row)) {
    if (!row.isBlank()) return true;
  }
  return false;
}

bool CsvReader::readRow(CsvRow& row) {
  row.line = line_;
  row.cells.clear();
  row.isCut = row.isTooLong = row.hasStrayText = false;
  bytes_ = 0;
  if (source_.peek() == TextSource::kEnd) return false;
  while (true) {
    std::string cell;
    readCell(row, cell);
    if (!row.isTooLong) row.cells.push_back(source_.utf8(std::move(cell)));
    if (source_.peek() == separator_) {
      source_.skip();
      continue;
    }
    takeBreak();
    return true;
  }
}

// A row that is too long is read to its end, and nothing of it is held.
void CsvReader::count(CsvRow& row) {
  if (++bytes_ <= kMostBytes) return;
  row.isTooLong = true;
  row.cells.clear();
}

void CsvReader::readCell(CsvRow& row, std::string& cell) {
  if (source_.peek() == '"') readQuoted(row, cell);
  while (true) {
    const auto next = source_.peek();
    if (next == TextSource::kEnd || next == separator_ || next == '\n' || next == '\r') return;
    source_.skip();
    count(row);
    if (!row.isTooLong) cell += static_cast<char>(next);
  }
}

// What follows the closing quote belongs to the cell as well, though it should not be there.
void CsvReader::readQuoted(CsvRow& row, std::string& cell) {
  source_.skip();
  while (true) {
    const auto next = source_.peek();
    if (next == TextSource::kEnd) {
      row.isCut = true;
      return;
    }
    source_.skip();
    if (next == '"') {
      if (source_.peek() != '"') break;
      source_.skip();
    }
    if (next == '\n' || (next == '\r' && source_.peek() != '\n')) ++line_;
    count(row);
    if (row.isTooLong) {
      cell.clear();
    } else {
      cell += static_cast<char>(next);
    }
  }
  const auto after = source_.peek();
  row.hasStrayText |=
      after != TextSource::kEnd && after != separator_ && after != '\n' && after != '\r';
}

void CsvReader::takeBreak() {
  const auto first = source_.peek();
  if (first != '\r' && first != '\n') return;
  source_.skip();
  if (first == '\r' && source_.peek() == '\n') source_.skip();
  ++line_;
}

}  // namespace ox::formats
