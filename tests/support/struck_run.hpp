#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/call_switch.hpp"
#include "tests/support/second_process.hpp"

namespace ox::support {

enum class Strikes : std::uint8_t { Once, FromThereOn };

// What goes wrong in a process: which of its calls on files of the test's folder is struck, and
// how.
struct Blow {
  const char* calls;  // the words of call_switch.hpp
  const char* fault;
  int at = 1;  // 0: never
  Strikes strikes = Strikes::Once;
};

// Two more kinds of calls, whose fault is that there is no more.
inline constexpr const char* kAllocations = "allocations";
// `at` is how many it may have beside those that its start takes, and one more.
inline constexpr const char* kDescriptors = "descriptors";

struct StruckRun {
  ProcessResult result;
  bool wasStruck = false;
};

// Runs that command with a switch in it, or with few descriptors: it counts as struck by these when
// it has failed.
StruckRun runStruck(const std::vector<std::string>& command, const Blow& blow);

// Runs that command with the call switch in it, which strikes nothing and logs every change that
// the command makes to a file of the test's folder.
ProcessResult runLogged(const std::vector<std::string>& command, const std::string& log);

}  // namespace ox::support
