// Takes the place of the system's functions that change files, in a process that loads it with
// LD_PRELOAD, and ends the process at the change that the environment names. The changes themselves
// are made by plain system calls, so that it needs nothing of the process it sits in. A sync is
// counted and not made: what a killed process has written stays where the machine goes on.
#include "tests/kills/kill_switch.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/support/path_of_file.hpp"

namespace {

using ox::kills::kAtVariable;
using ox::kills::kFolderVariable;
using ox::kills::kHowVariable;

// Read at the first change. Static initialisers of the process may come before those of the switch.
struct Plan {
  const char* folder = std::getenv(kFolderVariable);
  long at = folder == nullptr ? 0 : std::atol(std::getenv(kAtVariable));
  bool half = folder != nullptr && std::strcmp(std::getenv(kHowVariable), "half") == 0;
};

const Plan& plan() {
  static const Plan read;
  return read;
}

// The folder itself, whose names are synced, too.
bool isBelow(const char* path) {
  const auto length = std::strlen(plan().folder);
  if (std::strncmp(path, plan().folder, length) != 0) return false;
  return path[length] == '/' || path[length] == '\0';
}

bool isCounted(int file) {
  if (plan().folder == nullptr) return false;
  return isBelow(ox::support::PathOfFile(file).text());
}

bool isCounted(const char* path) {
  return plan().folder != nullptr && isBelow(path);
}

bool isTheLast() {
  static std::atomic<long> changes{0};
  return ++changes == plan().at;
}

[[noreturn]] void die() {
  ::kill(::getpid(), SIGKILL);
  for (;;) ::pause();
}

// Before a change that is no write.
template <typename FileOrPath>
void count(FileOrPath target) {
  if (isCounted(target) && !plan().half && isTheLast()) die();
}

// Before a write of that size; `writeHalf` is called when the process is to die within it.
template <typename WriteHalf>
void countWrite(int file, size_t size, WriteHalf writeHalf) {
  if (!isCounted(file)) return;
  if (!plan().half) {
    if (isTheLast()) die();
  } else if (size > 1 && isTheLast()) {
    writeHalf(size / 2);
    die();
  }
}

size_t sizeOf(const iovec* parts, int partCount) {
  size_t size = 0;
  for (int i = 0; i < partCount; ++i) size += parts[i].iov_len;
  return size;
}

void writeStart(int file, const iovec* parts, int partCount, size_t size) {
  for (int i = 0; i < partCount && size > 0; ++i) {
    const auto some = parts[i].iov_len < size ? parts[i].iov_len : size;
    ::syscall(SYS_write, file, parts[i].iov_base, some);
    size -= some;
  }
}

}  // namespace

extern "C" {

ssize_t write(int file, const void* bytes, size_t size) {
  countWrite(file, size, [&](size_t some) { ::syscall(SYS_write, file, bytes, some); });
  return ::syscall(SYS_write, file, bytes, size);
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t place) {
  countWrite(file, size, [&](size_t some) { ::syscall(SYS_pwrite64, file, bytes, some, place); });
  return ::syscall(SYS_pwrite64, file, bytes, size, place);
}

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t place) {
  return pwrite(file, bytes, size, place);
}

ssize_t writev(int file, const iovec* parts, int partCount) {
  countWrite(file, sizeOf(parts, partCount),
             [&](size_t some) { writeStart(file, parts, partCount, some); });
  return ::syscall(SYS_writev, file, parts, partCount);
}

ssize_t sendfile(int to, int from, off_t* place, size_t size) {
  count(to);
  return ::syscall(SYS_sendfile, to, from, place, size);
}

ssize_t sendfile64(int to, int from, off64_t* place, size_t size) {
  return sendfile(to, from, place, size);
}

ssize_t copy_file_range(int from, off64_t* fromPlace, int to, off64_t* toPlace, size_t size,
                        unsigned flags) {
  count(to);
  return ::syscall(SYS_copy_file_range, from, fromPlace, to, toPlace, size, flags);
}

int fsync(int file) {
  count(file);
  return isCounted(file) ? 0 : static_cast<int>(::syscall(SYS_fsync, file));
}

int fdatasync(int file) {
  count(file);
  return isCounted(file) ? 0 : static_cast<int>(::syscall(SYS_fdatasync, file));
}

int ftruncate(int file, off_t size) {
  count(file);
  return static_cast<int>(::syscall(SYS_ftruncate, file, size));
}

int ftruncate64(int file, off64_t size) {
  return ftruncate(file, size);
}

int truncate(const char* path, off_t size) {
  count(path);
  return static_cast<int>(::syscall(SYS_truncate, path, size));
}

int fallocate(int file, int mode, off_t place, off_t size) {
  count(file);
  return static_cast<int>(::syscall(SYS_fallocate, file, mode, place, size));
}

int posix_fallocate(int file, off_t place, off_t size) {
  count(file);
  return ::syscall(SYS_fallocate, file, 0, place, size) == 0 ? 0 : errno;
}

int rename(const char* from, const char* to) {
  count(to);
  return static_cast<int>(::syscall(SYS_rename, from, to));
}

int link(const char* from, const char* to) {
  count(to);
  return static_cast<int>(::syscall(SYS_link, from, to));
}

int unlink(const char* path) {
  count(path);
  return static_cast<int>(::syscall(SYS_unlink, path));
}

int remove(const char* path) {
  count(path);
  const auto result = ::syscall(SYS_unlink, path);
  return static_cast<int>(result != 0 && errno == EISDIR ? ::syscall(SYS_rmdir, path) : result);
}

}  // extern "C"
