#pragma once

#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <unistd.h>

#include "fuzz/require.hpp"

namespace ox::fuzz {

// A file of this process in the folder for temporary files, which scripts/fuzz lets lie in memory
// and removes afterwards.
inline std::string scratchPath(const char* name) {
  static const auto folder = [] {
    auto made = std::filesystem::temp_directory_path() / ("ox-fuzz-" + std::to_string(::getpid()));
    std::filesystem::create_directories(made);
    return made.string() + "/";
  }();
  return folder + name;
}

inline void writeScratch(const std::string& path, std::string_view bytes) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  require(file >= 0);
  require(::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  ::close(file);
}

inline std::string readScratch(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Makes a database of it: these bytes, those of its log, and nothing else beside it.
inline void writeDatabase(const std::string& path, std::string_view bytes,
                          std::string_view log = {}) {
  for (const auto* ending : {"-shm", "-journal", "-wal", "-synced"})
    ::unlink((path + ending).c_str());
  writeScratch(path, bytes);
  if (!log.empty()) writeScratch(path + "-wal", log);
}

}  // namespace ox::fuzz
