#pragma once

#include <memory>
#include <vector>

#include "ox/base/record_key.hpp"

namespace ox {

// Records in creation order, members and sub-groups in the order of adding.
using RecordKeys = std::vector<RecordKey>;
using RecordKeysPtr = std::shared_ptr<const RecordKeys>;

}  // namespace ox
