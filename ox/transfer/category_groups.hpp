#pragma once

#include <map>
#include <string>

#include "ox/platform/store/values/record_keys.hpp"

namespace ox::vcard {

using CategoryMembers = std::map<std::string, RecordKeys>;

// Makes a group of the container of each category, or takes the first one of that name that is
// there, and makes the persons its members, in one request. Adds nothing that is there already.
// Throws what the store throws.
void addCategoryGroups(const std::string& container, const CategoryMembers& members);

}  // namespace ox::vcard
