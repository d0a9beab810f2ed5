#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ox/records/record_counts.hpp"

namespace ox {

// What could be read of a damaged store, and what could not.
struct SalvageReport {
  RecordCounts records;
  std::uint64_t links = 0;
  std::uint64_t pictures = 0;
  std::uint64_t tags = 0;
  std::vector<std::string> damages;  // of the files, one sentence each
  std::vector<std::string> losses;   // of contacts, one sentence each
};

}  // namespace ox
