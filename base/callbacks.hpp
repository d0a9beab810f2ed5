#pragma once

#include <functional>

#include "base/data.hpp"

namespace ox {

// (percentage 0 to 100, finished). Intermediate reports carry false.
using ProgressCallback = std::function<void(double, bool)>;

}  // namespace ox
