#include "ox/base/store_location.hpp"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <pwd.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ox {
namespace {

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::string homeFolder() {
  if (auto home = environment("HOME"); !home.empty()) return home;
  std::array<char, 4096> buffer{};
  passwd entry{};
  passwd* found = nullptr;
  ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
  return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "/";
}

std::string dataFolder() {
  // The XDG base directory rules: a relative path is no path.
  if (auto folder = environment("XDG_DATA_HOME"); folder.starts_with('/')) return folder;
  return homeFolder() + "/.local/share";
}

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

std::string contactStorePath() {
  if (auto path = environment("OX_CONTACT_STORE"); !path.empty()) return path;
  return dataFolder() + "/oxcontacts/contacts.db";
}

std::string tagStorePath() {
  if (auto path = environment("OX_TAG_STORE"); !path.empty()) return path;
  return contactStorePath() + ".tags";
}

std::string placeOf(const std::string& path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  auto place = std::filesystem::absolute(path, error);
  if (error) return path;
  const auto status = std::filesystem::status(place, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) return path;
  for (int i = 0; i < kMostLinks && std::filesystem::is_symlink(place, error); ++i) {
    place = place.parent_path() / std::filesystem::read_symlink(place, error);
    if (error) return path;
  }
  auto whole = std::filesystem::weakly_canonical(place, error);
  return error ? path : whole.string();
}

bool isStoreFile(const std::string& path) {
  const auto place = placeOf(path);
  for (const auto& own : {contactStorePath(), contactStorePath() + ".tags", tagStorePath()}) {
    for (const auto* ending : {"", "-wal", "-shm", "-journal"}) {
      const auto file = placeOf(own) + ending;
      std::error_code error;
      if (file == place || (std::filesystem::equivalent(place, file, error) && !error)) return true;
    }
  }
  return false;
}

bool createPrivateFile(const std::string& path) {
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
