// Takes the place of the system's functions that work on files, in a process
// that loads it with LD_PRELOAD, and strikes the call that the environment
// names. The calls themselves are plain system calls, so that it needs nothing
// of the process it sits in. A sync is counted and not made: the machine of the
// tests keeps its power.
#include "tests/support/call_switch.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <iterator>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/uio.h>
#include <unistd.h>

#include "tests/support/path_of_file.hpp"

namespace {

namespace words = ox::support::call_switch;

enum class Call { Read, Write, Change, Open, Thread };  // a Change is no write
enum class Answer { Go, Fail, Half };

bool is(const char* variable, const char* word) {
  const auto* value = std::getenv(variable);
  return value != nullptr && std::strcmp(value, word) == 0;
}

// Read at the first call. Static initialisers of the process may come before
// those of the switch.
struct Plan {
  const char* folder = std::getenv(words::kFolder);
  const char* mark = std::getenv(words::kMark);
  const char* number = std::getenv(words::kAt);
  long at = number == nullptr ? 0 : std::atol(number);
  bool goesOn = std::getenv(words::kOn) != nullptr && !is(words::kOn, "");
  bool reads = is(words::kCalls, words::kReads) || is(words::kCalls, words::kTransfers);
  bool changes = is(words::kCalls, words::kChanges);
  bool writes =
      changes || is(words::kCalls, words::kWrites) || is(words::kCalls, words::kTransfers);
  bool opens = is(words::kCalls, words::kOpens);
  bool threads = is(words::kCalls, words::kThreads);
  bool full = is(words::kFault, words::kFull);
  bool none = is(words::kFault, words::kNone);
  bool dies = is(words::kFault, words::kDeath) || is(words::kFault, words::kDeathWithin);
  bool half = is(words::kFault, words::kHalf) || is(words::kFault, words::kDeathWithin);

  Plan() {
    if (folder != nullptr && !dies) ::alarm(words::kSeconds);
  }

  bool counts(Call call) const {
    if (call == Call::Read) return reads;
    if (call == Call::Write) return writes;
    if (call == Call::Change) return changes;
    return call == Call::Open ? opens : threads;
  }
};

const Plan& plan() {
  static const Plan read;
  return read;
}

// The folder itself, whose names are synced, too.
bool isBelow(const char* path) {
  if (plan().folder == nullptr) return false;
  const auto length = std::strlen(plan().folder);
  if (std::strncmp(path, plan().folder, length) != 0) return false;
  return path[length] == '/' || path[length] == '\0';
}

bool isBelow(int file) {
  return plan().folder != nullptr && isBelow(ox::support::PathOfFile(file).text());
}

[[noreturn]] void die() {
  ::kill(::getpid(), SIGKILL);
  for (;;) ::pause();
}

void leaveMark() {
  if (plan().mark == nullptr) return;
  const auto mark = ::syscall(SYS_openat, AT_FDCWD, plan().mark, O_CREAT | O_WRONLY, 0600);
  ::syscall(SYS_close, mark);
}

// What becomes of a call that is counted. Halves are made of what has two.
Answer ask(size_t size) {
  static std::atomic<long> calls{0};
  if (plan().half && size < 2) return Answer::Go;
  const auto number = ++calls;
  if (number != plan().at && (!plan().goesOn || number < plan().at)) return Answer::Go;
  leaveMark();
  if (plan().half) return Answer::Half;
  if (plan().dies) die();
  const bool fillsUp = plan().full && plan().goesOn && number == plan().at && size > 1;
  errno = plan().full ? ENOSPC : plan().none ? EMFILE : EIO;
  return fillsUp ? Answer::Half : Answer::Fail;
}

// Makes the transfer with all of its bytes, or with half of them, or fails.
template <typename Transfer>
ssize_t transfer(Call call, int file, size_t size, Transfer make) {
  if (!plan().counts(call) || !isBelow(file)) return make(size);
  const auto answer = ask(size);
  if (answer == Answer::Fail) return -1;
  const auto made = make(answer == Answer::Half ? size / 2 : size);
  if (answer == Answer::Half && plan().dies) die();
  return made;
}

int logFile() {
  static const auto* const path = std::getenv(words::kLog);
  if (path == nullptr) return -1;
  static const auto file = static_cast<int>(
      ::syscall(SYS_openat, AT_FDCWD, path, O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0600));
  return file;
}

void log(char what, const char* path, std::int64_t place = 0, const void* bytes = nullptr,
         std::uint64_t size = 0) {
  const std::uint64_t pathSize = std::strlen(path);
  const iovec parts[] = {{&what, 1},
                         {const_cast<std::uint64_t*>(&pathSize), sizeof pathSize},
                         {const_cast<char*>(path), pathSize},
                         {&place, sizeof place},
                         {&size, sizeof size},
                         {const_cast<void*>(bytes), size}};
  ::syscall(SYS_writev, logFile(), parts, std::size(parts));
}

// A change that was made; `result` is what the system answered.
template <typename Result>
Result logged(Result result, char what, int file, std::int64_t place = 0) {
  if (result >= 0 && logFile() >= 0 && isBelow(file)) {
    log(what, ox::support::PathOfFile(file).text(), place);
  }
  return result;
}

template <typename Result>
Result logged(Result result, char what, const char* path, std::int64_t place = 0,
              const char* newName = "") {
  if (result >= 0 && logFile() >= 0 && isBelow(path)) {
    log(what, path, place, newName, std::strlen(newName));
  }
  return result;
}

ssize_t loggedWrite(ssize_t written, int file, std::int64_t place, const void* bytes) {
  if (written > 0 && logFile() >= 0 && isBelow(file)) {
    log(words::kWritten, ox::support::PathOfFile(file).text(), place, bytes,
        static_cast<std::uint64_t>(written));
  }
  return written;
}

// Whether a call that is no transfer fails.
template <typename FileOrPath>
bool fails(Call call, FileOrPath target) {
  if (!plan().counts(call) || plan().half || !isBelow(target)) return false;
  return ask(0) == Answer::Fail;
}

size_t sizeOf(const iovec* parts, int partCount) {
  size_t size = 0;
  for (int i = 0; i < partCount; ++i) size += parts[i].iov_len;
  return size;
}

ssize_t readSome(int file, void* bytes, size_t size) {
  return ::syscall(SYS_read, file, bytes, size);
}

ssize_t writeSome(int file, const void* bytes, size_t size) {
  const auto written = ::syscall(SYS_write, file, bytes, size);
  return loggedWrite(written, file, ::syscall(SYS_lseek, file, 0, SEEK_CUR) - written, bytes);
}

// The first of the parts as far as that size reaches, one call for each.
template <typename Move>
ssize_t moveParts(Move move, int file, const iovec* parts, int partCount, size_t size) {
  ssize_t made = 0;
  for (int i = 0; i < partCount && size > 0; ++i) {
    const auto some = parts[i].iov_len < size ? parts[i].iov_len : size;
    const auto result = move(file, parts[i].iov_base, some);
    if (result < 0) return made > 0 ? made : -1;
    made += result;
    size -= some;
    if (static_cast<size_t>(result) < some) break;
  }
  return made;
}

int openAt(int folder, const char* path, int flags, mode_t mode) {
  if (fails(Call::Open, path)) return -1;
  const bool wasThere = ::syscall(SYS_faccessat, folder, path, F_OK) == 0;
  const auto file =
      static_cast<int>(::syscall(SYS_openat, folder, path, flags | O_LARGEFILE, mode));
  if (!wasThere && (flags & O_CREAT) != 0) return logged(file, words::kCreated, path);
  return (flags & O_TRUNC) != 0 ? logged(file, words::kResized, path) : file;
}

// A sync is not made: the machine of the tests keeps its power.
int syncOnce(long call, int file) {
  if (fails(Call::Change, file)) return -1;
  if (!isBelow(file)) return static_cast<int>(::syscall(call, file));
  struct stat status {};
  const bool isFolder = ::fstat(file, &status) == 0 && S_ISDIR(status.st_mode);
  return logged(0, isFolder ? words::kFolderSynced : words::kSynced, file);
}

// Bytes that pass from file to file within the system cannot be logged: who is
// refused that reads and writes them.
bool refusesCopy(int to) {
  if (fails(Call::Change, to)) return true;
  if (logFile() < 0) return false;
  errno = ENOSYS;
  return true;
}

}  // namespace

extern "C" {

ssize_t read(int file, void* bytes, size_t size) {
  return transfer(Call::Read, file, size, [&](size_t some) { return readSome(file, bytes, some); });
}

ssize_t pread(int file, void* bytes, size_t size, off_t place) {
  return transfer(Call::Read, file, size,
                  [&](size_t some) { return ::syscall(SYS_pread64, file, bytes, some, place); });
}

ssize_t pread64(int file, void* bytes, size_t size, off64_t place) {
  return pread(file, bytes, size, place);
}

ssize_t readv(int file, const iovec* parts, int partCount) {
  return transfer(Call::Read, file, sizeOf(parts, partCount),
                  [&](size_t some) { return moveParts(readSome, file, parts, partCount, some); });
}

ssize_t write(int file, const void* bytes, size_t size) {
  return transfer(Call::Write, file, size,
                  [&](size_t some) { return writeSome(file, bytes, some); });
}

ssize_t pwrite(int file, const void* bytes, size_t size, off_t place) {
  return transfer(Call::Write, file, size, [&](size_t some) {
    return loggedWrite(::syscall(SYS_pwrite64, file, bytes, some, place), file, place, bytes);
  });
}

ssize_t pwrite64(int file, const void* bytes, size_t size, off64_t place) {
  return pwrite(file, bytes, size, place);
}

ssize_t writev(int file, const iovec* parts, int partCount) {
  return transfer(Call::Write, file, sizeOf(parts, partCount),
                  [&](size_t some) { return moveParts(writeSome, file, parts, partCount, some); });
}

ssize_t sendfile(int to, int from, off_t* place, size_t size) {
  return refusesCopy(to) ? -1 : ::syscall(SYS_sendfile, to, from, place, size);
}

ssize_t sendfile64(int to, int from, off64_t* place, size_t size) {
  return sendfile(to, from, place, size);
}

ssize_t copy_file_range(int from, off64_t* fromPlace, int to, off64_t* toPlace, size_t size,
                        unsigned flags) {
  if (refusesCopy(to)) return -1;
  return ::syscall(SYS_copy_file_range, from, fromPlace, to, toPlace, size, flags);
}

int fsync(int file) {
  return syncOnce(SYS_fsync, file);
}

int fdatasync(int file) {
  return syncOnce(SYS_fdatasync, file);
}

int ftruncate(int file, off_t size) {
  if (fails(Call::Change, file)) return -1;
  const auto result = static_cast<int>(::syscall(SYS_ftruncate, file, size));
  return logged(result, words::kResized, file, size);
}

int ftruncate64(int file, off64_t size) {
  return ftruncate(file, size);
}

int truncate(const char* path, off_t size) {
  if (fails(Call::Change, path)) return -1;
  return logged(static_cast<int>(::syscall(SYS_truncate, path, size)), words::kResized, path, size);
}

int fallocate(int file, int mode, off_t place, off_t size) {
  if (fails(Call::Change, file)) return -1;
  return static_cast<int>(::syscall(SYS_fallocate, file, mode, place, size));
}

int posix_fallocate(int file, off_t place, off_t size) {
  return fallocate(file, 0, place, size) == 0 ? 0 : errno;
}

int rename(const char* from, const char* to) {
  if (fails(Call::Change, to)) return -1;
  return logged(static_cast<int>(::syscall(SYS_rename, from, to)), words::kRenamed, from, 0, to);
}

int link(const char* from, const char* to) {
  if (fails(Call::Change, to)) return -1;
  return static_cast<int>(::syscall(SYS_link, from, to));
}

int unlink(const char* path) {
  if (fails(Call::Change, path)) return -1;
  return logged(static_cast<int>(::syscall(SYS_unlink, path)), words::kRemoved, path);
}

int remove(const char* path) {
  if (fails(Call::Change, path)) return -1;
  const auto result = static_cast<int>(::syscall(SYS_unlink, path));
  if (result != 0 && errno == EISDIR) return static_cast<int>(::syscall(SYS_rmdir, path));
  return logged(result, words::kRemoved, path);
}

int open(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const auto mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return openAt(AT_FDCWD, path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const auto mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  return openAt(AT_FDCWD, path, flags, mode);
}

FILE* fopen(const char* path, const char* mode) {
  static const auto real =
      reinterpret_cast<FILE* (*)(const char*, const char*)>(::dlsym(RTLD_NEXT, "fopen"));
  return fails(Call::Open, path) ? nullptr : real(path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
  return fopen(path, mode);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) {
  using Real = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto real = reinterpret_cast<Real>(::dlsym(RTLD_NEXT, "pthread_create"));
  if (plan().threads && ask(0) == Answer::Fail) return EAGAIN;
  return real(thread, attributes, start, argument);
}

}  // extern "C"
