#include "bench/machine.hpp"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sqlite3.h>
#include <string>
#include <sys/resource.h>
#include <sys/utsname.h>
#include <thread>
#include <unicode/uversion.h>

namespace ox::bench {
namespace {

// What stands after the first colon of the first line that starts so.
std::string lineOf(const char* path, const std::string& start) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const auto colon = line.find(':');
    if (line.starts_with(start) && colon != std::string::npos) {
      return line.substr(line.find_first_not_of(" \t", colon + 1));
    }
  }
  return "unknown";
}

}  // namespace

void printMachine() {
  utsname system{};
  ::uname(&system);
  double load = 0;
  ::getloadavg(&load, 1);
  std::printf("processor  %s, %u at hand, load %.1f\n",
              lineOf("/proc/cpuinfo", "model name").c_str(), std::thread::hardware_concurrency(),
              load);
  std::printf("memory     %s\n", lineOf("/proc/meminfo", "MemTotal").c_str());
  std::printf("system     %s %s\n", system.sysname, system.release);
  std::printf("versions   g++ %s, SQLite %s, ICU %s\n", __VERSION__, sqlite3_libversion(),
              U_ICU_VERSION);
}

Used usedSoFar() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return {seconds(usage.ru_utime) + seconds(usage.ru_stime),
          std::strtod(lineOf("/proc/self/io", "wchar").c_str(), nullptr)};
}

bool isOptimised() {
#if !defined(__OPTIMIZE__) || !defined(NDEBUG) || defined(__SANITIZE_ADDRESS__) || \
    defined(__SANITIZE_THREAD__)
  return false;
#else
  return true;
#endif
}

}  // namespace ox::bench
