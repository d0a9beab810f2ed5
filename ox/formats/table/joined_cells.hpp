#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ox/formats/person/person_fields.hpp"

// Several values in one cell, with " ::: " between them.

namespace ox::formats {

inline constexpr std::string_view kJoin = " ::: ";

// An entry for each of the values that its parts join; labels are all the same.
std::vector<FieldEntry> partedEntries(const FieldEntry& entry);

// Without blanks around them, and empty ones. A cell without the join is parted at semicolons,
// as Outlook has its categories.
std::vector<std::string> partedTags(std::string_view cell);
std::string joinedTags(const std::vector<std::string>& tags);

}  // namespace ox::formats
