#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace ox {

// A group and one of its sub-groups, by their row numbers.
using GroupLink = std::pair<std::int64_t, std::int64_t>;

// The groups that are below themselves, rising. Takes time by the link.
std::vector<std::int64_t> groupsBelowThemselves(const std::vector<GroupLink>& links);

}  // namespace ox
