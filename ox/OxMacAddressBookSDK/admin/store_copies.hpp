#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/records/record_counts.hpp"

// The copies of the contact store that are kept in the folder "<store>.copies" beside it: one from
// before each migration, and one from before each act that replaces much, made by whoever does
// that. The last three are kept. Safe from any thread; what fails is a StoreError.

namespace ox {

// One of them. It is a store by itself, with its tags beside it.
struct StoredCopy {
  std::string name;                    // of its file, without the ending
  std::string path;                    // of its file
  std::string time;                    // when it was made, in UTC: "2026-12-31T23:59:59Z"
  std::string reason;                  // before what: "restore"
  std::optional<RecordCounts> counts;  // missing when it cannot be read
  std::uint64_t bytes = 0;             // with its tags
};

// The newest first.
OX_EXPORT std::vector<StoredCopy> storeCopies();

// Where the next copy belongs, made because of that reason (small letters and dashes): for a
// StoreCopy, with sweepStoreCopies once it is put there.
OX_EXPORT std::string pathOfNextStoreCopy(const std::string& reason);
OX_EXPORT void sweepStoreCopies(const std::string& made);

}  // namespace ox
