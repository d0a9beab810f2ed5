#pragma once

#include <cstdint>
#include <string>

#include "ox/base/export.hpp"

// What went wrong in this process. The operations that hosts call report no errors; they count them
// here, and whoever must not report a success that was none compares before and after. Safe from
// any thread.

namespace ox::failures {

struct Snapshot {
  std::uint64_t refusals = 0;  // asked for something that is not allowed; nothing changed
  std::uint64_t failures = 0;  // a file or the system failed; the answer was empty
  std::string lastReason;      // of either kind; empty when there was none

  bool operator==(const Snapshot&) const = default;
};

OX_EXPORT void countRefusal(std::string reason);
OX_EXPORT void countFailure(std::string reason);
OX_EXPORT Snapshot snapshot();
// The number of failures alone: what was read while it rose may be empty for no reason of its own.
OX_EXPORT std::uint64_t failureCount();
// Those that this thread counted, outside of every Aside: for work that is done on one thread, and
// must not be taken for failed because of what others do meanwhile.
OX_EXPORT std::uint64_t failureCountOfThread();

// While it lives, what its thread counts is left out of failureCountOfThread(): for callbacks,
// whose failures are not those of the work.
class OX_EXPORT Aside {
 public:
  Aside();
  Aside(const Aside&) = delete;
  Aside& operator=(const Aside&) = delete;
  ~Aside();

 private:
  std::uint64_t before_;
};

}  // namespace ox::failures
