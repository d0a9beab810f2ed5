#pragma once

#include <exception>
#include <string>

#include "ox/base/failures.hpp"

namespace ox {

// Counts what was thrown as a failure: "<what>: <reason>". Throws nothing, though there may be no
// memory left for the reason.
inline void countThrown(const char* what, const char* reason) noexcept {
  try {
    failures::countFailure(std::string(what) + ": " + reason);
  } catch (...) {
    return;  // the last report is owed all the same
  }
}

// Runs the task; false, and counted as a failure, when it threw. For what must go on to its last
// report whatever happens on the way.
template <typename Task>
bool contained(const char* what, Task task) noexcept {
  try {
    task();
    return true;
  } catch (const std::exception& error) {
    countThrown(what, error.what());
  } catch (...) {
    countThrown(what, "something that is no exception was thrown");
  }
  return false;
}

}  // namespace ox
