#include "ox/base/replacement_file.hpp"

#include <cassert>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

#include "ox/base/paths_in.hpp"
#include "ox/base/planted.hpp"
#include "ox/base/uuid.hpp"

namespace ox {
namespace {

// The errno that says why the target cannot be replaced; 0 when it can.
int obstacle(const std::string& target) {
  struct stat status {};
  if (::stat(target.c_str(), &status) != 0) return errno == ENOENT ? 0 : errno;
  if (S_ISDIR(status.st_mode)) return EISDIR;
  return S_ISREG(status.st_mode) ? 0 : EINVAL;
}

constexpr std::string_view kEnding = ".new";

std::string folderOf(const std::string& path) {
  const auto folder = std::filesystem::path(path).parent_path();
  return folder.empty() ? "." : folder.string();
}

// Of "target.01A2004B-0963-7000-A2B0-2348FC99B775.new", and of what is put beside it meanwhile: the
// path of the former. Empty for any other file.
std::string unfinishedOf(const std::string& target, std::string path) {
  for (const std::string_view beside : {"-journal", "-wal", "-shm", "-synced"}) {
    if (path.ends_with(beside)) path.resize(path.size() - beside.size());
  }
  const auto name = std::filesystem::path(path).filename().string();
  const auto start = std::filesystem::path(target).filename().string() + ".";
  if (!name.starts_with(start) || !name.ends_with(kEnding)) return {};
  if (name.size() <= start.size() + kEnding.size()) return {};
  const auto id = name.substr(start.size(), name.size() - start.size() - kEnding.size());
  return uuidFromText(id) ? path : std::string();
}

// What killed processes have left of the same target. What cannot be removed, or found, stays.
void sweepLeft(const std::string& target) try {
  std::vector<std::string> left;
  for (const auto& path : pathsIn(folderOf(target))) {
    const auto unfinished = unfinishedOf(target, path);
    if (unfinished.empty()) continue;
    std::error_code unknown;
    const bool isThere = std::filesystem::exists(unfinished, unknown) || unknown;
    if (!isThere || ReplacementFile::isAbandoned(unfinished)) left.push_back(path);
  }
  for (const auto& path : left) ::unlink(path.c_str());
} catch (const std::filesystem::filesystem_error&) {
  // The folder may be one that is written only.
}

// Some file systems cannot sync a folder; they need not.
void syncFolderOf(const std::string& path) {
  const int file = ::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  ::fsync(file);
  ::close(file);
}

}  // namespace

ReplacementFile::ReplacementFile(std::string target) {
  retarget(std::move(target));
  sweepLeft(target_);
  while (!tryMaking()) continue;
}

void ReplacementFile::retarget(std::string target) {
  target_ = std::move(target);
  refusePlanted(target_);
  const int code = obstacle(target_);
  if (code == EINVAL) target_ += " is no regular file";
  if (code != 0) fail(code);
}

// The lock tells others that somebody still writes the file: it ends with the process. False when
// somebody has taken the file for an abandoned one before the lock was there.
bool ReplacementFile::tryMaking() {
  path_ = target_ + "." + uuidText(makeUuid()) + std::string(kEnding);
  file_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file_ < 0) fail(errno);
  const bool isTaken = ::flock(file_, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  struct stat status {};
  if (!isTaken && ::fstat(file_, &status) == 0 && status.st_nlink > 0) return true;
  ::close(std::exchange(file_, -1));
  ::unlink(path_.c_str());
  return false;
}

bool ReplacementFile::isAbandoned(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (file < 0) return false;
  const bool isLeft = ::flock(file, LOCK_EX | LOCK_NB) == 0;
  ::close(file);
  return isLeft;
}

ReplacementFile::~ReplacementFile() {
  if (file_ >= 0) ::close(file_);
  if (!committed_) ::unlink(path_.c_str());
}

void ReplacementFile::fail(int code) const {
  throw std::system_error(code, std::generic_category(), target_);
}

template <typename Write>
void ReplacementFile::writeAll(std::string_view bytes, Write write) const {
  assert(file_ >= 0 && !committed_);
  while (!bytes.empty()) {
    const auto written = write(bytes);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail(errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void ReplacementFile::write(std::string_view bytes) {
  writeAll(bytes, [&](std::string_view rest) { return ::write(file_, rest.data(), rest.size()); });
}

void ReplacementFile::replaceStart(std::string_view bytes) {
  writeAll(bytes, [&](std::string_view rest) {
    return ::pwrite(file_, rest.data(), rest.size(),
                    static_cast<off_t>(bytes.size() - rest.size()));
  });
}

void ReplacementFile::commit() {
  assert(file_ >= 0 && !committed_);
  if (::fsync(file_) != 0) fail(errno);
  if (std::rename(path_.c_str(), target_.c_str()) != 0) fail(errno);
  committed_ = true;
  syncFolderOf(target_);
}

}  // namespace ox
