#pragma once

#include <cstdint>
#include <string>

namespace ox {

struct StoreCounts {
  std::uint64_t groups = 0;
  std::uint64_t persons = 0;
};

// Writes a copy of the store at `from`, as it is committed at one moment whatever other processes
// do, and replaces the file `to` by it once it is complete and synced; the result is what the copy
// holds. Throws StoreError, and `to` is as it was: no store at `from`, both are the same file, a
// place that cannot be written, a copy that is not sound.
StoreCounts copyStore(const std::string& from, const std::string& to);

// The same for the database of another kind that belongs to a store.
void copyDatabase(const std::string& from, const std::string& to);

}  // namespace ox
