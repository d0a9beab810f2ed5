#pragma once

#include <cstddef>
#include <vector>

namespace ox {

// What a merge (merge.hpp) knows of the entries of three lists: their numbers from 0, none twice in
// one list, the same number in several lists for the same entry.
using EntryKeys = std::vector<std::size_t>;

struct KeyLists {
  EntryKeys base;
  EntryKeys mine;
  EntryKeys theirs;
  std::size_t count = 0;  // of numbers that were given out
};

// The entries that stand, in their order. `keptByMine` says by number which entries of mine stand
// although theirs has removed them.
EntryKeys mergedKeys(const KeyLists& lists, const std::vector<bool>& keptByMine);

}  // namespace ox
