#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tests/faults/disk_log.hpp"
#include "tests/support/second_process.hpp"

namespace ox::faults {

// The files of the test's folder as they are, but for those that no disk has to keep.
DiskLog filesFound();

// Runs the command and answers, behind what was found before, every change that it made to a file
// of the test's folder.
std::pair<support::ProcessResult, DiskLog> runAndLog(const std::vector<std::string>& command,
                                                     DiskLog found);

}  // namespace ox::faults
