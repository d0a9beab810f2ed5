#pragma once

#include <vector>

#include "ox/base/uuid.hpp"
#include "ox/records/tag_change.hpp"

namespace ox {

// Changes of tags that are committed in the store, and that the tag file may not have followed yet.
struct TagDebts {
  Uuid store{};              // the name of the store, without acts too
  std::vector<TagAct> acts;  // in their order
};

}  // namespace ox
