#pragma once

#include <functional>

#include "ox/base/data.hpp"

namespace ox {

// (percentage 0 to 100, finished). Intermediate reports carry false.
using ProgressCallback = std::function<void(double, bool)>;

// (finished, serialised book, percentage 0 to 100). The data is missing in intermediate reports.
using SaveCallback = std::function<void(bool, const Data&, double)>;

}  // namespace ox
