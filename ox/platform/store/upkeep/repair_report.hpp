#pragma once

#include <string>
#include <vector>

namespace ox {

// What became of a store, with its tags or without them, that was to be mended.
struct RepairReport {
  std::vector<std::string> mended;  // one sentence for each thing
  std::vector<std::string> left;    // what is wrong still, as a check tells it
  std::string copy;                 // of the store as it was; empty when nothing was changed
};

}  // namespace ox
