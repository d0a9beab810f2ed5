#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"

namespace ox::support {

// While it lives, the log of that database is so long that programs started through `limited` can
// commit nothing to it: no file of theirs may grow that far. What they read they can read.
class LogWithoutRoom {
 public:
  explicit LogWithoutRoom(const std::string& database);

  // The command under that limit. What it writes elsewhere is not half as long.
  static std::vector<std::string> limited(std::vector<std::string> command);

 private:
  sqlite::Connection reader_;  // keeps the log from being begun anew
  std::optional<sqlite::Snapshot> moment_;
};

}  // namespace ox::support
