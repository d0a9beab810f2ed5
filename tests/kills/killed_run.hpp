#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/second_process.hpp"

namespace ox::kills {

enum class How : std::uint8_t { Before, Half };  // dies before the change, or half through a write

// Where a process is killed: at which of the changes that it makes to files of the test's folder.
struct Moment {
  How how = How::Before;
  int change = 1;  // 0: never

  std::string text() const;
};

// Runs that command with the call switch in it. The exit code is 128 + SIGKILL when it came as far
// as that change.
support::ProcessResult runUntil(const Moment& moment, const std::vector<std::string>& command);
// The same, not killed; without its syncs, which nothing here needs.
support::ProcessResult runAlive(const std::vector<std::string>& command);
bool wasKilled(const support::ProcessResult& result);

// The files of the test's folder at one moment, kept to be brought back. Nobody may have the store
// open meanwhile.
class PreparedFolder {
 public:
  // Kept beside the others under that name, which begins with "prepared".
  explicit PreparedFolder(const std::string& name = "prepared");
  void bringBack() const;
  // Nothing is left but what is kept.
  static void clear();

 private:
  std::filesystem::path kept_;
};

// Calls the attempt for every moment at which the command can be killed, each time on the files as
// they are now, until it was not killed any more; the attempt looks at what is left. The result is
// how often it was killed.
int killEverywhere(const std::vector<std::string>& command,
                   const std::function<void(const support::ProcessResult& result)>& attempt);

}  // namespace ox::kills
