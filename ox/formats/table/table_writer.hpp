#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "ox/formats/person/person_fields.hpp"

namespace ox::formats {

// Writes persons as rows of our own table (RFC 4180: UTF-8, commas, CRLF). It has as many columns
// of each kind as the person has entries who has the most: every person is counted before the first
// row is written. Cells hold the very values, whatever a spreadsheet may take them for.
class TableWriter {
 public:
  void count(const PersonFields& person);
  std::string header() const;
  std::string row(const PersonFields& person) const;

 private:
  std::array<std::size_t, kKinds> counts_{};
};

}  // namespace ox::formats
