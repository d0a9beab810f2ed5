#pragma once

// The words between the memory switch, which is loaded into a process (LD_PRELOAD), and whoever
// starts it: names of environment variables. It counts what is allocated from main on.

namespace ox::support::memory_switch {

// That allocation is refused, the first one being 1.
inline constexpr const char* kAt = "OX_MEMORY_AT";
// Empty, or every one after it is refused too.
inline constexpr const char* kOn = "OX_MEMORY_ON";
// Made, empty, when it came to that allocation.
inline constexpr const char* kMark = "OX_MEMORY_MARK";
// A process that hangs is ended by SIGALRM after that many seconds.
inline constexpr int kSeconds = 60;

}  // namespace ox::support::memory_switch
