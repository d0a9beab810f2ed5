#pragma once

#include <cstddef>

namespace ox::support {

// From now on `new` for that many bytes or more throws std::bad_alloc, on every thread. Only in
// test programs that compile allocation_limit.cpp, which takes the place of the global operators.
void refuseAllocationsFrom(std::size_t bytes);
void allowAllAllocations();

}  // namespace ox::support
