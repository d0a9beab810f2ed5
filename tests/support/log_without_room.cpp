#include "tests/support/log_without_room.hpp"

#include <filesystem>

namespace ox::support {
namespace {

constexpr int kLimitKiB = 400;

}  // namespace

LogWithoutRoom::LogWithoutRoom(const std::string& database)
    : reader_(database, sqlite::Connection::Mode::ReadWrite) {
  moment_.emplace(reader_);
  reader_.queryInteger("SELECT count(*) FROM sqlite_schema");
  sqlite::Connection writer(database, sqlite::Connection::Mode::ReadWrite);
  writer.execute("PRAGMA synchronous=OFF; PRAGMA wal_autocheckpoint=0");
  const auto version =
      "PRAGMA user_version=" + std::to_string(writer.queryInteger("PRAGMA user_version"));
  // Each writes the first page anew.
  while (std::filesystem::file_size(writer.logPath()) <= kLimitKiB * 1024) {
    writer.execute(version.c_str());
  }
}

std::vector<std::string> LogWithoutRoom::limited(std::vector<std::string> command) {
  const std::vector<std::string> shell = {
      "/bin/sh", "-c", "trap '' XFSZ; ulimit -f " + std::to_string(2 * kLimitKiB) + "; exec \"$@\"",
      "sh"};
  command.insert(command.begin(), shell.begin(), shell.end());
  return command;
}

}  // namespace ox::support
