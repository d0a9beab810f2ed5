// Takes the place of the system's functions that read files, in a process that loads it with
// LD_PRELOAD, and lets the read fail that the environment names. The reads themselves are made by
// plain system calls, so that it needs nothing of the process it sits in.
#include "tests/faults/read_switch.hpp"

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/support/path_of_file.hpp"

namespace {

// Read at the first read. Static initialisers of the process may come before those of the switch.
struct Plan {
  const char* folder = std::getenv(ox::faults::kReadFolderVariable);
  const char* mark = folder == nullptr ? nullptr : std::getenv(ox::faults::kReadMarkVariable);
  long at = folder == nullptr ? 0 : std::atol(std::getenv(ox::faults::kReadAtVariable));
  bool goesOn = folder != nullptr && *std::getenv(ox::faults::kReadOnVariable) != '\0';
};

const Plan& plan() {
  static const Plan read;
  return read;
}

bool isCounted(int file) {
  if (plan().folder == nullptr) return false;
  const ox::support::PathOfFile path(file);
  const auto length = std::strlen(plan().folder);
  return std::strncmp(path.text(), plan().folder, length) == 0 && path.text()[length] == '/';
}

bool fails(int file) {
  static std::atomic<long> reads{0};
  if (!isCounted(file)) return false;
  const auto number = ++reads;
  if (number != plan().at && (!plan().goesOn || number < plan().at)) return false;
  const auto mark = ::syscall(SYS_openat, AT_FDCWD, plan().mark, O_CREAT | O_WRONLY, 0600);
  ::syscall(SYS_close, mark);
  errno = EIO;
  return true;
}

}  // namespace

extern "C" {

ssize_t read(int file, void* bytes, size_t size) {
  return fails(file) ? -1 : ::syscall(SYS_read, file, bytes, size);
}

ssize_t pread(int file, void* bytes, size_t size, off_t place) {
  return fails(file) ? -1 : ::syscall(SYS_pread64, file, bytes, size, place);
}

ssize_t pread64(int file, void* bytes, size_t size, off64_t place) {
  return pread(file, bytes, size, place);
}

ssize_t readv(int file, const iovec* parts, int partCount) {
  return fails(file) ? -1 : ::syscall(SYS_readv, file, parts, partCount);
}

}  // extern "C"
