#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ox {

struct SalvagedTags {
  std::uint64_t tags = 0;
  std::vector<std::string> damages;  // of the file, one sentence each
};

// Writes what can be read of the tag file at `from`, page by page, into a new one at `to`, which is
// there and empty. Throws FailureError.
SalvagedTags salvageTags(const std::string& from, const std::string& to);

}  // namespace ox
