#include "ox/formats/table/table_source.hpp"

#include <algorithm>
#include <string>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::formats {
namespace {

using What = ColumnMeaning::What;

bool isText(const std::string& cell) {
  return std::ranges::none_of(cell, [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20U && c != '\t' && c != '\n' && c != '\r';
  });
}

bool isBlankCell(const std::string& cell) {
  return vcard::trimmed(cell).empty();
}

std::string countOf(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace

void TableSource::readHeader() {
  if (columns_) return;
  const bool hasNoZeros = text_.ahead().find('\0') == std::string_view::npos;
  if (!reader_.next(row_)) throw FormatError("is empty");
  const bool isHeader =
      hasNoZeros && !row_.isCut && !row_.isTooLong && std::ranges::all_of(row_.cells, isText);
  if (!isHeader) throw FormatError("is no table of text");
  columns_.emplace(row_.cells);
  if (!columns_->areKnown()) {
    throw FormatError("has no first line that names columns of contacts");
  }
  named_ = std::make_shared<const std::vector<PropertyId>>(columns_->properties());
  isTold_.assign(columns_->all().size(), false);
}

const Columns& TableSource::columns() {
  readHeader();
  return *columns_;
}

std::optional<vcard::CardResult> TableSource::next() {
  readHeader();
  if (!reader_.next(row_)) return std::nullopt;
  return cardOfRow();
}

vcard::CardResult TableSource::cardOfRow() {
  const auto refused = [this](const char* reason) { return vcard::Refusal{row_.line, reason}; };
  if (row_.isTooLong) return refused("a row of more than 64 MiB");
  if (row_.isCut) return refused("the file ends within a quoted cell, which begins in this row");
  remarkColumns();
  const auto fields = columns_->fieldsOf(row_.cells);
  if (fields.isEmpty()) return refused("tells nothing of a person");
  auto card = cardOf(fields, row_.line);
  const auto columns = columns_->all().size();
  if (row_.hasStrayText) card.repairs.push_back({row_.line, "text behind a closing quote"});
  if (row_.cells.size() != columns) {
    const bool isBeyond = row_.cells.size() > columns;
    card.repairs.push_back({row_.line, countOf(row_.cells.size(), "cell") + " in a table of " +
                                           countOf(columns, "column") +
                                           (isBeyond ? ", the last ones are in the note" : "")});
  }
  return card;
}

// Where cells of a column first are something that no person has.
void TableSource::remarkColumns() {
  for (std::size_t i = 0; i < row_.cells.size() && i < isTold_.size(); ++i) {
    const auto& column = columns_->all()[i];
    const bool isPlaced =
        column.meaning.what != What::Unknown && column.meaning.what != What::LeftOut;
    if (isPlaced || isTold_[i] || isBlankCell(row_.cells[i])) continue;
    isTold_[i] = true;
    remark(row_.line, "column \"" + column.name + "\": " +
                          (column.meaning.what == What::LeftOut
                               ? "says nothing of a person, left out"
                               : "not understood, kept as lines in the note"));
  }
}

}  // namespace ox::formats
