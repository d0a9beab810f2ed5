#pragma once

#include <optional>
#include <vector>

#include "ox/formats/card_source.hpp"
#include "ox/formats/table/columns.hpp"
#include "ox/formats/table/csv_reader.hpp"
#include "ox/formats/text/text_source.hpp"

namespace ox::formats {

// The persons of a table: our own, or what others export. Its first row names the columns.
class TableSource : public CardSource {
 public:
  // The source is borrowed. A charset: that of text that is no UTF-8 (TextSource).
  explicit TableSource(vcard::ByteSource& source, const std::string& charset = {})
      : text_(source, charset), reader_(text_) {}

  std::optional<vcard::CardResult> next() override;
  std::shared_ptr<const std::vector<PropertyId>> named() const override { return named_; }
  std::uint64_t bytesRead() const override { return text_.bytesRead(); }
  // As the header names them. Throws FormatError.
  const Columns& columns();

 private:
  void readHeader();
  vcard::CardResult cardOfRow();
  void remarkColumns();

  TextSource text_;
  CsvReader reader_;
  CsvRow row_;
  std::optional<Columns> columns_;
  std::shared_ptr<const std::vector<PropertyId>> named_;
  std::vector<bool> isTold_;  // of each column, that its cells are not what they should be
};

}  // namespace ox::formats
