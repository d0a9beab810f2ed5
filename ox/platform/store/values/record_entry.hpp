#pragma once

#include <cstdint>

#include "ox/base/record_key.hpp"

namespace ox {

// What the store file knows of a record without its values. Rows rise in the order of creation and
// are never used again; the container is given by its row.
struct RecordEntry {
  RecordKey key;
  std::int64_t row = 0;
  std::int32_t container = 0;
  RecordKind kind = RecordKind::Person;
};

}  // namespace ox
