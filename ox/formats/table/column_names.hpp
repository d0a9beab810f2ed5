#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "ox/formats/person/person_fields.hpp"

namespace ox::formats {

// What the cells of a column are.
struct ColumnMeaning {
  enum class What : std::uint8_t { Unknown, LeftOut, Single, Tags, Label, Part };
  // A part whose columns are lines of one text, or which stands for the others when they are empty.
  enum class Joined : std::uint8_t { No, Lines, Whole };

  What what = What::Unknown;
  Single single = Single::FullName;
  Kind kind = Kind::Email;
  Part part = Part::Value;
  std::string_view label = {};  // of the entry, where the column says it
  Joined joined = Joined::No;
  bool isOfGoogle = false;  // a name that one program alone writes, which joins values by " ::: "
};

// A column by its name, and which of several it is of: the 2 of "Phone 2 - Value"; 0 without a
// number.
struct NamedColumn {
  ColumnMeaning meaning;
  unsigned number = 0;
};

// Names are those of our own tables and of the exports of others, in any case.
NamedColumn columnOfName(std::string_view name);

}  // namespace ox::formats
