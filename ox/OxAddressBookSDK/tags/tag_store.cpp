#include "ox/OxAddressBookSDK/tags/tag_store.hpp"

#include <algorithm>
#include <filesystem>

#include "ox/base/private_file.hpp"
#include "ox/base/store_location.hpp"

namespace ox {

TagStore& TagStore::shared() {
  static auto& store = *new TagStore;
  return store;
}

TagFile* TagStore::existing() {
  if (file_) return file_.get();
  settleStoreLocation();
  const auto path = tagStorePath();
  if (!std::filesystem::exists(path)) return nullptr;
  file_ = std::make_unique<TagFile>(path);
  return file_.get();
}

TagFile& TagStore::existingOrNew() {
  if (!file_) {
    settleStoreLocation();
    const auto path = tagStorePath();
    createPrivateFile(path);
    file_ = std::make_unique<TagFile>(path);
  }
  return *file_;
}

TagStore::Tags TagStore::tags(std::string_view manager, std::string_view person) {
  const std::lock_guard lock(mutex_);
  auto* file = existing();
  return file == nullptr ? Tags() : file->tags(manager, person);
}

void TagStore::add(std::string_view manager, std::string_view person, std::string_view tag) {
  const std::lock_guard lock(mutex_);
  existingOrNew().add(manager, person, tag);
  unsynced_ = true;
}

// The edits below read first. A read takes no write lock, so that clearing what is clear already,
// as is done for each new person, stays cheap; and nothing is remembered here that another process
// could make untrue.

void TagStore::remove(std::string_view manager, std::string_view person, std::string_view tag) {
  const std::lock_guard lock(mutex_);
  auto* file = existing();
  if (file == nullptr) return;
  const auto present = file->tags(manager, person);
  if (std::find(present.begin(), present.end(), tag) == present.end()) return;
  file->remove(manager, person, tag);
  unsynced_ = true;
}

void TagStore::replace(std::string_view manager, std::string_view person, const Tags& tags) {
  const std::lock_guard lock(mutex_);
  auto* file = tags.empty() ? existing() : &existingOrNew();
  if (file == nullptr || file->tags(manager, person) == tags) return;
  file->replace(manager, person, tags);
  unsynced_ = true;
}

TagStore::Tags TagStore::problems() {
  const std::lock_guard lock(mutex_);
  auto* file = existing();
  return file == nullptr ? Tags() : file->problems();
}

void TagStore::makeDurable() {
  const std::lock_guard lock(mutex_);
  if (!file_ || !unsynced_) return;
  file_->sync();
  unsynced_ = false;
}

}  // namespace ox
