#pragma once

#include <cstdint>

namespace ox {

// How many records of each kind a store, a book or a file holds.
struct RecordCounts {
  std::uint64_t groups = 0;
  std::uint64_t persons = 0;

  bool operator==(const RecordCounts&) const = default;
};

}  // namespace ox
