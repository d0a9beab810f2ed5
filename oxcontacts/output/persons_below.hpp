#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "ox/platform/store/values/record_keys.hpp"

namespace ox::program {

// A group among others: which of them are its sub-groups, and its own persons.
struct NestedGroup {
  std::vector<std::size_t> subGroups;
  RecordKeys persons;
};

// Of each group, how many persons it and the groups below it hold, each counted once. Where groups
// lie in one another in many ways that takes many steps; missing when it takes more than so many.
std::optional<std::vector<std::size_t>> personsBelow(const std::vector<NestedGroup>& groups,
                                                     std::size_t atMostSteps);

}  // namespace ox::program
