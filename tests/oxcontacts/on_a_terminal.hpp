#pragma once

#include <string>
#include <vector>

#include "tests/support/second_process.hpp"

namespace ox::program_tests {

// Runs the program with these of its standard streams on a terminal, raw, where somebody has typed
// the answer; what it wrote there is the output.
support::ProcessResult runOnATerminal(const std::vector<std::string>& arguments,
                                      const std::vector<int>& streams,
                                      const std::string& answer = {});

}  // namespace ox::program_tests
