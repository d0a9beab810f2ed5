#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ox/formats/person/person_fields.hpp"
#include "ox/formats/table/column_names.hpp"
#include "ox/records/property_types.hpp"

namespace ox::formats {

// One column of a table that is imported.
struct Column {
  std::string name;
  ColumnMeaning meaning;
  std::size_t entry = 0;  // of a label or a part: which of the entries that the columns make
};

// The columns of a table by its header, and what a row of it is.
class Columns {
 public:
  explicit Columns(const std::vector<std::string>& header);

  // Whether any of them tells of a person: else the first row is no header.
  bool areKnown() const { return areKnown_; }
  const std::vector<Column>& all() const { return columns_; }
  // That they tell of a person.
  std::vector<PropertyId> properties() const;
  // What becomes of its cells, in words: "first name", "phone (Work)".
  std::string whatBecomesOf(const Column& column) const;

  // Cells beyond the columns go below the note, like those of unknown columns.
  PersonFields fieldsOf(const std::vector<std::string>& cells) const;

 private:
  struct Entry {
    Kind kind;
    std::string_view label;
    unsigned number;
  };

  std::size_t entryFor(const NamedColumn& column);
  void takeCell(const Column& column, const std::string& cell, PersonFields& fields,
                std::vector<FieldEntry>& entries) const;
  void addEntry(FieldEntry entry, PersonFields& fields) const;
  void addTags(std::string_view cell, PersonFields& fields) const;

  std::vector<Column> columns_;
  std::vector<Entry> entries_;
  bool areKnown_ = false;
  bool areOfGoogle_ = false;
};

}  // namespace ox::formats
