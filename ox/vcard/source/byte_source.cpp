#include "ox/vcard/source/byte_source.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ox::vcard {
namespace {

[[noreturn]] void fail(const std::string& path, int code) {
  throw SourceError(path + ": " + std::generic_category().message(code));
}

std::size_t copyPart(std::string_view bytes, std::uint64_t offset, char* buffer, std::size_t size) {
  if (offset >= bytes.size()) return 0;
  const auto part = bytes.substr(static_cast<std::size_t>(offset), size);
  if (!part.empty()) std::memcpy(buffer, part.data(), part.size());
  return part.size();
}

}  // namespace

std::size_t ByteSource::peekAt(std::uint64_t /*offset*/, char* /*buffer*/, std::size_t /*size*/) {
  return 0;
}

std::size_t MemorySource::read(char* buffer, std::size_t size) {
  const auto count = copyPart(bytes_, next_, buffer, size);
  next_ += count;
  return count;
}

std::size_t MemorySource::peekAt(std::uint64_t offset, char* buffer, std::size_t size) {
  return copyPart(bytes_, offset, buffer, size);
}

FileSource::FileSource(const std::string& path, const std::atomic<bool>* stop)
    : path_(path), stop_(stop) {
  // Waits while nobody writes to a pipe. A stop leaves it unopened, which reads as its end.
  while (descriptor_ < 0) {
    descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor_ >= 0) break;
    if (errno != EINTR) fail(path_, errno);
    if (stop_ != nullptr && stop_->load()) return;
  }
  struct stat status {};
  int failure = ::fstat(descriptor_, &status) != 0 ? errno : 0;
  if (failure == 0 && S_ISDIR(status.st_mode)) failure = EISDIR;
  if (failure != 0) {
    ::close(descriptor_);
    fail(path_, failure);
  }
  isFile_ = S_ISREG(status.st_mode);
  if (isFile_) size_ = static_cast<std::uint64_t>(status.st_size);
}

FileSource::~FileSource() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

// False when it was stopped instead. A signal may come just before the wait: looked at again soon.
bool FileSource::waitForInput() const {
  constexpr int kMilliseconds = 500;
  while (!stop_->load()) {
    pollfd wanted{descriptor_, POLLIN, 0};
    if (::poll(&wanted, 1, kMilliseconds) > 0) return true;
  }
  return false;
}

std::size_t FileSource::read(char* buffer, std::size_t size) {
  if (descriptor_ < 0 || (stop_ != nullptr && !isFile_ && !waitForInput())) return 0;
  while (true) {
    const auto got = ::read(descriptor_, buffer, size);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) fail(path_, errno);
  }
}

std::size_t FileSource::peekAt(std::uint64_t offset, char* buffer, std::size_t size) {
  const auto got = ::pread(descriptor_, buffer, size, static_cast<off_t>(offset));
  return got > 0 ? static_cast<std::size_t>(got) : 0;
}

}  // namespace ox::vcard
