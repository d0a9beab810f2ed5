#include "ox/base/store_location.hpp"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <optional>
#include <pwd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

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

// The store that the process was told to use instead of that of the environment.
struct ChosenStore {
  std::mutex mutex;
  std::optional<StoreAddress> store;
  bool settled = false;
};

ChosenStore& chosenStore() {
  static auto& chosen = *new ChosenStore;
  return chosen;
}

std::optional<StoreAddress> chosenAddress() {
  auto& chosen = chosenStore();
  const std::lock_guard lock(chosen.mutex);
  return chosen.store;
}

}  // namespace

std::string StoreAddress::folder() const {
  return std::filesystem::path(file_).parent_path().string();
}

std::string StoreAddress::searchFile() const {
  return placeOf(file_) + ".find";
}

bool StoreAddress::isReadOnly() const {
  if (::access(file_.c_str(), F_OK) != 0) return false;
  const auto around = folder();
  return ::access(file_.c_str(), W_OK) != 0 ||
         ::access(around.empty() ? "." : around.c_str(), W_OK) != 0;
}

bool useContactStore(std::string address) {
  auto& chosen = chosenStore();
  const std::lock_guard lock(chosen.mutex);
  if (chosen.settled || address.empty()) return false;
  chosen.store = StoreAddress(std::move(address));
  return true;
}

void settleStoreLocation() {
  auto& chosen = chosenStore();
  const std::lock_guard lock(chosen.mutex);
  chosen.settled = true;
}

StoreAddress contactStore() {
  if (auto chosen = chosenAddress()) return *std::move(chosen);
  if (auto path = environment("OX_CONTACT_STORE"); !path.empty()) return path;
  return dataFolder() + "/oxcontacts/contacts.db";
}

std::string contactStorePath() {
  return contactStore().file();
}

std::string tagStorePath() {
  if (auto path = environment("OX_TAG_STORE"); !path.empty()) return path;
  return contactStore().tagFile();
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
  const auto store = contactStore();
  for (const auto& own : {store.file(), store.tagFile(), store.searchFile(), tagStorePath()}) {
    for (const auto* ending : {"", "-wal", "-shm", "-journal", "-synced"}) {
      const auto file = placeOf(own) + ending;
      std::error_code error;
      if (file == place || (std::filesystem::equivalent(place, file, error) && !error)) return true;
    }
  }
  return false;
}

}  // namespace ox
