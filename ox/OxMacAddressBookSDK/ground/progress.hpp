#pragma once

#include <cfloat>
#include <cstddef>

#include "ox/base/callbacks.hpp"

// Progress values are exact results of single-precision steps, widened at the end.

namespace ox::progress {

static_assert(FLT_EVAL_METHOD == 0, "single-precision steps must be rounded to single precision");

inline constexpr double kDone = 100.0;

// done of total, in percent.
inline double percent(std::size_t done, std::size_t total) {
  return static_cast<double>(static_cast<float>(done) * 100.0F / static_cast<float>(total));
}

// What `spent` percent leave of the whole, as a factor; not clamped.
inline double shareLeft(std::size_t spent) {
  return static_cast<double>((100.0F - static_cast<float>(spent)) / 100.0F);
}

inline void report(const ProgressCallback& callback, double value, bool finished = false) {
  if (callback) callback(value, finished);
}

}  // namespace ox::progress
