#pragma once

#include <cstddef>
#include <map>
#include <string>

#include "ox/platform/store/values/record_keys.hpp"

namespace ox::vcard {

using CategoryMembers = std::map<std::string, RecordKeys>;

// Makes a group of the container of each category, or takes the first one of that name that is
// there, and makes the persons its members, in one request. Adds nothing that is there already.
// The result is how many groups are new. Throws what the store throws.
std::size_t addCategoryGroups(const std::string& container, const CategoryMembers& members);

}  // namespace ox::vcard
