#include "ox/platform/store/schema/kept_copies.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <functional>
#include <sys/stat.h>
#include <system_error>

#include "ox/base/paths_in.hpp"
#include "ox/base/replacement_file.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "ox/platform/store/values/store_error.hpp"

namespace ox {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kEnding = ".db";
constexpr std::size_t kTimeLength = sizeof "20261231T235959.999Z" - 1;

fs::path folderOf(const std::string& store) {
  return placeOf(store) + ".copies";
}

// To the millisecond, so that copies made one after another have names of their own.
std::string timeNow() {
  using std::chrono::milliseconds;
  const auto now = std::chrono::floor<milliseconds>(std::chrono::system_clock::now());
  const auto seconds = std::chrono::system_clock::to_time_t(now);
  const auto rest = static_cast<int>(now.time_since_epoch().count() % 1000);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  char day[sizeof "20261231T235959"];
  std::strftime(day, sizeof day, "%Y%m%dT%H%M%S", &parts);
  const auto fraction = std::to_string(1000 + rest).substr(1);
  return std::string(day) + "." + fraction + "Z";
}

void makeFolder(const fs::path& folder) {
  if (::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST) return;
  throw std::system_error(errno, std::generic_category(), folder.string());
}

bool isCopy(const fs::path& path) {
  const auto name = path.filename().string();
  return name.size() > kTimeLength && name[kTimeLength] == '-' && name.ends_with(kEnding);
}

template <typename Step>
auto guarded(const std::string& store, Step step) -> decltype(step()) {
  try {
    return step();
  } catch (const std::system_error& error) {
    throwStoreError(store, error);
  }
}

// Of a copy in the making, or of what lies beside one (its log): the path of the copy. Empty for
// any other file.
std::string copyInTheMaking(const std::string& path) {
  constexpr std::string_view kUnfinished = ".new";
  const auto end = path.rfind(kUnfinished);
  return end == std::string::npos ? std::string() : path.substr(0, end + kUnfinished.size());
}

}  // namespace

std::string tagsOfStore(const std::string& store) {
  return placeOf(store) == placeOf(contactStorePath()) ? tagStorePath() : store + ".tags";
}

std::string pathOfNextCopy(const std::string& store, const std::string& reason) {
  return guarded(store, [&] {
    const auto folder = folderOf(store);
    makeFolder(folder);
    while (true) {
      const auto path = folder / (timeNow() + "-" + reason + std::string(kEnding));
      if (!fs::exists(path)) return path.string();
    }
  });
}

std::vector<std::string> pathsOfCopies(const std::string& store) {
  return guarded(store, [&] {
    std::vector<std::string> paths;
    if (!fs::exists(folderOf(store))) return paths;
    for (const auto& path : pathsIn(folderOf(store).string())) {
      if (isCopy(path)) paths.push_back(path);
    }
    std::ranges::sort(paths, std::greater<>());
    return paths;
  });
}

std::vector<std::string> sweepUnfinishedCopies(const std::string& store) {
  return guarded(store, [&] {
    std::vector<std::string> inUse;
    std::vector<std::string> left;
    if (!fs::exists(folderOf(store))) return inUse;
    for (const auto& path : pathsIn(folderOf(store).string())) {
      const auto copy = copyInTheMaking(path);
      if (copy.empty()) continue;
      if (!fs::exists(copy) || ReplacementFile::isAbandoned(copy)) {
        left.push_back(path);
      } else if (path == copy) {
        inUse.push_back(path);
      }
    }
    for (const auto& path : left) fs::remove_all(path);
    return inUse;
  });
}

// What is older than the oldest copy that stays goes, whatever it is: copies, their tags, the logs
// of those that somebody opened.
void sweepCopies(const std::string& store, const std::string& made) {
  sweepUnfinishedCopies(store);
  const auto copies = pathsOfCopies(store);
  if (copies.size() < kKeptCopies) return;
  const auto oldest = fs::path(copies[kKeptCopies - 1]).filename().string();
  // A clock that was put back gives a new copy the name of an old one.
  const auto isMade = [name = fs::path(made).filename().string()](const std::string& other) {
    return other.starts_with(name);
  };
  guarded(store, [&] {
    std::vector<std::string> old;
    for (const auto& path : pathsIn(folderOf(store).string())) {
      const auto name = fs::path(path).filename().string();
      const bool isUnfinished = !copyInTheMaking(name).empty();
      if (name < oldest && !isMade(name) && !isUnfinished) old.push_back(path);
    }
    for (const auto& path : old) fs::remove_all(path);
  });
}

std::string keepCopy(const std::string& store, const std::string& reason) {
  auto path = pathOfNextCopy(store, reason);
  if (std::filesystem::exists(tagsOfStore(store))) {
    DatabaseCopy tags(path + ".tags");
    // Damaged tags cost the tags of the copy and nothing else.
    if (tags.takeDatabase(tagsOfStore(store), DatabaseCopy::WhenDamaged::LeaveOut)) tags.put();
  }
  copyStore(store, path);  // last: a copy counts once its store is there
  sweepCopies(store, path);
  return path;
}

}  // namespace ox
