#pragma once

#include <cstdint>
#include <vector>

#include "ox/base/uuid.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// Changes of tags that are committed in the store, and that the tag file may not have followed yet.
struct TagDebts {
  struct OfAct {
    std::int64_t number = 0;
    std::vector<TagChange> changes;
  };

  Uuid store{};             // the name of the store
  std::vector<OfAct> acts;  // in their order
};

}  // namespace ox
