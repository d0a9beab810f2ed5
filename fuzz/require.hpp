#pragma once

#include <cstdlib>

namespace ox::fuzz {

// Ends the run, with the input kept, when something is not as it must be.
inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace ox::fuzz
