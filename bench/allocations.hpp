#pragma once

#include <cstdint>

// Counts what C++ allocates, in every thread: what C libraries take for themselves is not seen.
namespace ox::bench {

void countAllocationsAnew();
// Since then, or since the program began.
std::uint64_t allocationsCounted();

}  // namespace ox::bench
