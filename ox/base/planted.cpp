#include "ox/base/planted.hpp"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace ox {
namespace {

using Path = std::filesystem::path;

constexpr int kMostLinks = 40;

// Whether nobody but the user, the system or the folder's owner can have made it.
bool isTrusted(uid_t owner, uid_t folderOwner) {
  const auto user = ::geteuid();
  return owner == user || owner == 0 || (user != 0 && owner == folderOwner);
}

[[noreturn]] void refuse(const std::string& path, const Path& planted, const char* what,
                         uid_t owner) {
  throw std::system_error(EACCES, std::generic_category(),
                          path + ": " + planted.string() + " is " + what + " of another user (" +
                              std::to_string(owner) + "), which is not followed");
}

// Walks the path as the system would, looking at each part before it is followed.
class Walk {
 public:
  explicit Walk(const std::string& path) : path_(path) {
    std::error_code error;
    const auto whole = std::filesystem::absolute(path, error);
    if (!error) add(whole);
  }

  void run() {
    while (!ahead_.empty()) {
      const auto name = ahead_.back();
      ahead_.pop_back();
      if (!enter(name)) return;
    }
  }

 private:
  void add(const Path& path) {
    std::vector<Path> names(path.begin(), path.end());
    ahead_.insert(ahead_.end(), names.rbegin(), names.rend());
  }

  // False where nothing is there, or where it leads in a circle: whoever opens it says so.
  bool enter(const Path& name) {
    if (name.is_absolute()) {
      here_ = name;
      return true;
    }
    if (name.empty() || name == ".") return true;
    if (name == "..") {
      here_ = here_.parent_path();
      return true;
    }
    const auto next = here_ / name;
    struct stat folder {};
    struct stat status {};
    if (::stat(here_.c_str(), &folder) != 0 || ::lstat(next.c_str(), &status) != 0) return false;
    const bool trusted = isTrusted(status.st_uid, folder.st_uid);
    if (S_ISLNK(status.st_mode)) {
      if (!trusted) refuse(path_, next, "a link", status.st_uid);
      std::error_code error;
      const auto target = std::filesystem::read_symlink(next, error);
      if (error || ++links_ > kMostLinks) return false;
      add(target);
      return true;
    }
    const bool isOrdinary = S_ISREG(status.st_mode) || S_ISDIR(status.st_mode);
    if (!isOrdinary && !trusted) refuse(path_, next, "a pipe or device", status.st_uid);
    here_ = next;
    return true;
  }

  const std::string& path_;
  Path here_;
  std::vector<Path> ahead_;  // the next one last
  int links_ = 0;
};

}  // namespace

void refusePlanted(const std::string& path) {
  Walk(path).run();
}

}  // namespace ox
