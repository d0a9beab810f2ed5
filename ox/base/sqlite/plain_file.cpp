#include "ox/base/sqlite/plain_file.hpp"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ox/base/failure.hpp"

namespace ox::sqlite {

PlainFile::PlainFile(const std::string& path, Missing missing)
    : file_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {
  const auto code = errno;
  struct stat status {};
  const bool isRegular = file_ >= 0 && ::fstat(file_, &status) == 0 && S_ISREG(status.st_mode);
  if (isRegular) {
    size_ = static_cast<std::uint64_t>(status.st_size);
    return;
  }
  const bool isOpen = file_ >= 0;
  if (isOpen) ::close(file_);
  file_ = -1;
  if (missing == Missing::IsEmpty) return;
  throw FailureError(isOpen ? FailureKind::NotAStore : FailureKind::Unavailable,
                     path + ": " + (isOpen ? "is not a regular file" : std::strerror(code)), path);
}

PlainFile::~PlainFile() {
  if (file_ >= 0) ::close(file_);
}

std::optional<std::string> PlainFile::bytes(std::uint64_t from, std::size_t wanted) const {
  std::string result(wanted, '\0');
  std::size_t read = 0;
  while (read < wanted) {
    const auto now =
        ::pread(file_, result.data() + read, wanted - read, static_cast<off_t>(from + read));
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) return std::nullopt;
    read += static_cast<std::size_t>(now);
  }
  return result;
}

std::uint32_t bigEndian16(std::string_view bytes, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[at + i]));
  };
  return byte(0) << 8U | byte(1);
}

std::uint32_t bigEndian32(std::string_view bytes, std::size_t at) {
  return bigEndian16(bytes, at) << 16U | bigEndian16(bytes, at + 2);
}

}  // namespace ox::sqlite
