#pragma once

#include <exception>
#include <string>

#include "ox/base/failures.hpp"

namespace ox {

// Notices a failure: "<what>: <reason>". Throws nothing, though there may be no memory left for the
// reason: the last report is owed all the same.
inline void noticeThrown(const char* what, const char* reason,
                         FailureKind kind = FailureKind::Other) noexcept {
  try {
    failures::notice(kind, std::string(what) + ": " + reason);
  } catch (...) {
    failures::notice(kind, what);
  }
}

// Runs the task; false, and noticed as a failure, when it threw. For what must go on to its last
// report whatever happens on the way.
template <typename Task>
bool contained(const char* what, Task task) noexcept {
  try {
    task();
    return true;
  } catch (const std::exception& error) {
    noticeThrown(what, error.what(), kindOf(error));
  } catch (...) {
    noticeThrown(what, "something that is no exception was thrown");
  }
  return false;
}

}  // namespace ox
