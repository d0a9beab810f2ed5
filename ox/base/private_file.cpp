#include "ox/base/private_file.hpp"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "ox/base/planted.hpp"

namespace ox {
namespace {

[[noreturn]] void fail(const std::string& path) {
  throw std::system_error(errno, std::generic_category(), path);
}

// So that the new name survives a power cut. Some file systems cannot sync a folder; they need not.
void syncFolder(const std::filesystem::path& folder) {
  const int file =
      ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  ::fsync(file);
  ::close(file);
}

// Whether there is such a folder now; errno says why not.
bool createPrivateFolder(const std::filesystem::path& folder) {
  if (::mkdir(folder.c_str(), 0700) != 0) return errno == EEXIST;
  syncFolder(folder.parent_path());
  return true;
}

// Only what is missing is made: folders that are there keep their rights.
void createPrivateFolders(const std::filesystem::path& folder) {
  if (folder.empty() || createPrivateFolder(folder)) return;
  if (errno != ENOENT || folder == folder.parent_path()) fail(folder);
  createPrivateFolders(folder.parent_path());
  if (!createPrivateFolder(folder)) fail(folder);
}

}  // namespace

bool createPrivateFile(const std::string& path) {
  refusePlanted(path);
  const auto folder = std::filesystem::path(path).parent_path();
  createPrivateFolders(folder);
  const int file = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) {
    if (errno == EEXIST) return false;
    fail(path);
  }
  ::close(file);
  syncFolder(folder);
  return true;
}

}  // namespace ox
