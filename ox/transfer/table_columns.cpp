#include "ox/transfer/table_columns.hpp"

#include <stdexcept>

#include "ox/formats/table/table_source.hpp"

namespace ox::formats {

std::vector<ColumnUse> tableColumns(const std::string& path) {
  vcard::FileSource source(path);
  TableSource table(source);
  try {
    const auto& columns = table.columns();
    std::vector<ColumnUse> uses;
    for (const auto& column : columns.all()) {
      uses.push_back({column.name, columns.whatBecomesOf(column)});
    }
    return uses;
  } catch (const FormatError& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

}  // namespace ox::formats
