#pragma once

#include <chrono>
#include <cstdint>

namespace ox {

// Of the wall clock, since 1970.
inline std::int64_t millisecondsNow() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

}  // namespace ox
