#pragma once

#include <cstdint>
#include <limits>

#include "ox/base/record_key.hpp"

namespace ox {

// Whether a stored number can be the row of a container. No act may take another one for a
// container that it has decided to add, of which there is no row yet.
constexpr bool isContainerRow(std::int64_t number) {
  return number > 0 && number <= std::numeric_limits<std::int32_t>::max();
}

// What the store file knows of a record without its values. Rows rise in the order of creation and
// are never used again; the container is given by its row.
struct RecordEntry {
  RecordKey key;
  std::int64_t row = 0;
  std::int32_t container = 0;
  RecordKind kind = RecordKind::Person;
};

}  // namespace ox
