#pragma once

#include <cassert>
#include <cfloat>
#include <cstddef>

#include "ox/base/callbacks.hpp"

// Hosts compare progress values exactly, so each is the result of single-precision steps in the
// order written here, widened to double at the end. A quotient in double precision, or a product
// taken before it, gives other last digits.

namespace ox::progress {

static_assert(FLT_EVAL_METHOD == 0, "single-precision steps must be rounded to single precision");

inline constexpr double kDone = 100.0;

// done of total, in percent.
inline double percent(std::size_t done, std::size_t total) {
  assert(total > 0 && done <= total);
  return static_cast<double>(static_cast<float>(done) * 100.0F / static_cast<float>(total));
}

// What is left of the whole once `spent` percent are used, as a factor. It is not clamped: above a
// hundred it is negative, and later values then fall.
inline double shareLeft(std::size_t spent) {
  return static_cast<double>((100.0F - static_cast<float>(spent)) / 100.0F);
}

inline void report(const ProgressCallback& callback, double value, bool finished = false) {
  if (callback) callback(value, finished);
}

}  // namespace ox::progress
