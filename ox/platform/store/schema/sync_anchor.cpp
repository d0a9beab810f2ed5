#include "ox/platform/store/schema/sync_anchor.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "ox/base/checksum.hpp"

namespace ox {
namespace {

// A mark, the name of the store, number, name and time of the act, and the checksum of all that.
// Within one sector, and read by the machine that wrote it.
constexpr std::string_view kMark = "OxSynced";
constexpr std::size_t kBytes = 64;
constexpr std::size_t kSumAt = kBytes - sizeof(std::uint64_t);
using Bytes = std::array<char, kBytes>;

// Copies one part after another between a note and its bytes.
template <typename Bytes, typename Act, typename Copy>
void eachPart(Bytes& bytes, Act& act, Copy copy) {
  auto* place = bytes.data() + kMark.size();
  const auto part = [&](auto& value) {
    copy(place, value);
    place += sizeof value;
  };
  part(act.store);
  part(act.moment.number);
  part(act.moment.name);
  part(act.at);
}

std::uint64_t sumOf(const Bytes& bytes) {
  return checksum64({bytes.data(), kSumAt});
}

Bytes encoded(const SyncedAct& act) {
  Bytes bytes{};
  std::ranges::copy(kMark, bytes.begin());
  eachPart(bytes, act,
           [](char* place, const auto& value) { std::memcpy(place, &value, sizeof value); });
  const auto sum = sumOf(bytes);
  std::memcpy(bytes.data() + kSumAt, &sum, sizeof sum);
  return bytes;
}

std::optional<SyncedAct> decoded(const Bytes& bytes) {
  std::uint64_t sum = 0;
  std::memcpy(&sum, bytes.data() + kSumAt, sizeof sum);
  const std::string_view mark(bytes.data(), kMark.size());
  if (mark != kMark || sum != sumOf(bytes)) return std::nullopt;
  SyncedAct act;
  eachPart(bytes, act,
           [](const char* place, auto& value) { std::memcpy(&value, place, sizeof value); });
  return act;
}

// Open for as long as it is read or written.
class OpenFile {
 public:
  // A link that somebody has put there is not followed, and a pipe not waited for.
  OpenFile(const std::string& path, int flags)
      : file_(::open(path.c_str(), flags | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600)) {}
  // Made anew, for everybody who can read and write the store.
  OpenFile(const std::string& path, const struct stat& store)
      : OpenFile(path, O_WRONLY | O_CREAT | O_EXCL) {
    constexpr mode_t kReadAndWrite = 0666;
    if (file_ < 0) return;
    ::fchmod(file_, store.st_mode & kReadAndWrite);
    if (::geteuid() == 0 && ::fchown(file_, store.st_uid, store.st_gid) != 0) {
      // It stays root's, as a log would.
    }
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    if (file_ >= 0) ::close(file_);
  }

  bool isOpen() const { return file_ >= 0; }
  // How many bytes were moved before the end or a failure, of which errno tells.
  std::size_t read(Bytes& bytes) const {
    return moveAll([&](std::size_t done) {
      return ::pread(file_, bytes.data() + done, kBytes - done, static_cast<off_t>(done));
    });
  }
  std::size_t write(const Bytes& bytes) const {
    return moveAll([&](std::size_t done) {
      return ::pwrite(file_, bytes.data() + done, kBytes - done, static_cast<off_t>(done));
    });
  }

 private:
  template <typename Move>
  static std::size_t moveAll(Move move) {
    std::size_t done = 0;
    while (done < kBytes) {
      errno = 0;
      const auto moved = move(done);
      if (moved < 0 && errno == EINTR) continue;
      if (moved <= 0) break;
      done += static_cast<std::size_t>(moved);
    }
    return done;
  }

  int file_;
};

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

void removeSynced(const std::string& path) {
  if (::unlink(path.c_str()) != 0) {
    if (errno == ENOENT) return;
    fail(path);
  }
  const auto folder = std::filesystem::path(path).parent_path();
  const int file =
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;  // some file systems cannot sync a folder; they need not
  ::fsync(file);
  ::close(file);
}

}  // namespace

SyncAnchor::SyncAnchor(const sqlite::Connection& store) : SyncAnchor(store.filePath()) {}

SyncAnchor::SyncAnchor(const std::string& store)
    : store_(store), path_(store + "-synced"), log_(store + "-wal") {}

std::optional<SyncedAct> SyncAnchor::read() const {
  const OpenFile file(path_, O_RDONLY);
  if (!file.isOpen()) {
    // What another user has put there says nothing.
    if (errno == ENOENT || errno == ELOOP || errno == EACCES) return std::nullopt;
    fail(path_);
  }
  Bytes bytes{};
  if (file.read(bytes) == kBytes) return decoded(bytes);
  if (errno != 0) fail(path_);
  return std::nullopt;
}

void SyncAnchor::write(const SyncedAct& act) const noexcept {
  const OpenFile there(path_, O_WRONLY);
  if (there.isOpen()) {
    there.write(encoded(act));
    return;
  }
  struct stat store {};
  if (errno != ENOENT || ::stat(store_.c_str(), &store) != 0) return;
  const OpenFile made(path_, store);
  if (made.isOpen()) made.write(encoded(act));
}

void SyncAnchor::settle(const std::optional<SyncedAct>& noted) const noexcept try {
  if (::access(log_.c_str(), F_OK) == 0 || errno != ENOENT) return;
  const auto now = read();
  if (!now) return;
  const bool wasPutSince =
      !noted || (now->store == noted->store && now->moment.number > noted->moment.number);
  if (wasPutSince || now == noted) ::unlink(path_.c_str());
} catch (const std::exception&) {
  // A note that stays says nothing wrong.
}

void SyncAnchor::remove() const {
  removeSynced(path_);
}

void SyncAnchor::removeOf(const std::string& store) {
  removeSynced(SyncAnchor(store).path_);
}

}  // namespace ox
