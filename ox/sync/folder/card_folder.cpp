#include "ox/sync/folder/card_folder.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {
namespace {

constexpr std::string_view kEnding = ".vcf";
// No card is that large; what is has been put there by mistake.
constexpr std::uint64_t kMostBytes = std::uint64_t{256} << 20;
// How often a file that somebody is writing is read again.
constexpr int kMostReads = 4;

struct Closer {
  void operator()(DIR* folder) const { ::closedir(folder); }
};

[[noreturn]] void fail(const std::string& path, int code) {
  throw std::system_error(code, std::generic_category(), path);
}

void waitFor(std::int64_t nanoseconds) {
  if (nanoseconds <= 0) return;
  const struct timespec time { .tv_sec = 0, .tv_nsec = nanoseconds };
  ::nanosleep(&time, nullptr);
}

FileFacts factsOfOpen(int file, const std::string& path) {
  struct stat status {};
  if (::fstat(file, &status) != 0) fail(path, errno);
  return factsOf(status);
}

std::string bytesOf(int file, std::uint64_t size, const std::string& path) {
  std::string bytes(size + 1, '\0');  // one more, which tells whether it has grown
  std::size_t done = 0;
  while (done < bytes.size()) {
    const auto read =
        ::pread(file, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
    if (read < 0 && errno == EINTR) continue;
    if (read < 0) fail(path, errno);
    if (read == 0) break;
    done += static_cast<std::size_t>(read);
  }
  bytes.resize(done);
  return bytes;
}

}  // namespace

bool isCardName(std::string_view name) {
  return name.size() > kEnding.size() && name.size() <= 255 && name.front() != '.' &&
         name.ends_with(kEnding) && name.find('/') == name.npos && name.find('\0') == name.npos;
}

OpenFile::~OpenFile() {
  if (file_ >= 0) ::close(file_);
}

CardFolder::CardFolder(std::string path)
    : path_(std::move(path)), folder_(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  if (number() >= 0) return;
  throw RemoteError(RemoteFailure::Away, path_ + ": " + std::strerror(errno));
}

std::string CardFolder::pathOf(const std::string& name) const {
  return path_.ends_with('/') ? path_ + name : path_ + "/" + name;
}

bool CardFolder::isWritable() const {
  return ::faccessat(number(), ".", W_OK | X_OK, AT_EACCESS) == 0;
}

std::vector<std::string> CardFolder::names() const {
  const int copy = ::openat(number(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (copy < 0) fail(path_, errno);
  const std::unique_ptr<DIR, Closer> folder(::fdopendir(copy));
  if (!folder) {
    const int code = errno;
    ::close(copy);
    fail(path_, code);
  }
  std::vector<std::string> names;
  for (;;) {
    errno = 0;
    const auto* entry = ::readdir(folder.get());
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
  if (errno != 0) fail(path_, errno);
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> CardFolder::cardNames() const {
  auto found = names();
  std::erase_if(found, [&](const std::string& name) {
    if (!isCardName(name)) return true;
    struct stat status {};
    if (::fstatat(number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
      return !S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode);
    }
    if (errno != ENOENT) fail(pathOf(name), errno);
    return true;
  });
  return found;
}

std::optional<FileFacts> CardFolder::facts(const std::string& name) const {
  struct stat status {};
  for (int tries = 0;; ++tries) {
    if (::fstatat(number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno == ENOENT) return std::nullopt;
      fail(pathOf(name), errno);
    }
    const auto found = factsOf(status);
    const auto left = untilSettled(found);
    if (left == 0 || tries > 0) return found;
    waitFor(left);
  }
}

// Text and facts belong together when nothing happened to the file between looking at it before
// and after.
std::optional<CardFolder::Content> CardFolder::content(const std::string& name) const {
  const auto path = pathOf(name);
  const OpenFile file(
      ::openat(number(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (file.number() < 0) {
    if (errno == ENOENT) return std::nullopt;
    fail(path, errno);
  }
  for (int reads = 0; reads < kMostReads; ++reads) {
    auto before = factsOfOpen(file.number(), path);
    if (!S_ISREG(before.mode)) fail(path, S_ISDIR(before.mode) ? EISDIR : EINVAL);
    if (before.size > kMostBytes) fail(path, EFBIG);
    if (const auto left = untilSettled(before); left > 0) {
      waitFor(left);
      before = factsOfOpen(file.number(), path);
      if (before.size > kMostBytes) fail(path, EFBIG);
    }
    auto text = bytesOf(file.number(), before.size, path);
    if (text.size() == before.size && factsOfOpen(file.number(), path) == before) {
      return Content{std::move(text), before};
    }
  }
  fail(path, EBUSY);
}

std::string CardFolder::Content::etag() const {
  return isSettled(facts) ? etagOf(facts) : etagOf(facts, text);
}

// Only a file whose facts cannot be trusted is read.
std::optional<std::string> CardFolder::etag(const std::string& name) const {
  const auto found = facts(name);
  if (!found) return std::nullopt;
  // Leave to read it changes none of the facts, so it stands in the ETag: the card is fetched anew.
  const bool isReadable =
      S_ISREG(found->mode) && ::faccessat(number(), name.c_str(), R_OK, AT_EACCESS) == 0;
  if (!isReadable) return etagOf(*found) + "-unreadable";
  if (isSettled(*found)) return etagOf(*found);
  try {
    const auto read = content(name);
    if (!read) return std::nullopt;
    return read->etag();
  } catch (const std::system_error&) {
    return etagOf(*found) + "-unreadable";  // whoever fetches it is told why
  }
}

bool CardFolder::isStill(const std::string& name, const std::string& etag) const {
  const auto found = facts(name);
  if (!found) return false;
  const auto plain = etagOf(*found);
  if (etag == plain) return true;
  if (!etag.starts_with(plain + "-")) return false;
  const auto read = content(name);
  return read && etag == etagOf(read->facts, read->text);
}

// Some file systems cannot sync a folder; they need not.
void CardFolder::sync() const {
  if (::fsync(number()) == 0 || errno == EINVAL || errno == ENOTSUP) return;
  throw RemoteError(RemoteFailure::Away, path_ + ": " + std::strerror(errno));
}

}  // namespace ox::sync
