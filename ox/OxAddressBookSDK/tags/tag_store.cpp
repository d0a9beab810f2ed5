#include "ox/OxAddressBookSDK/tags/tag_store.hpp"

#include <algorithm>
#include <cassert>
#include <filesystem>
#include <set>
#include <utility>

#include "ox/base/private_file.hpp"
#include "ox/base/store_location.hpp"

namespace ox {
namespace {

using Tags = TagStore::Tags;

bool holds(const Tags& tags, std::string_view tag) {
  return std::ranges::find(tags, tag) != tags.end();
}

}  // namespace

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

TagStore::Tags TagStore::written(std::string_view manager, std::string_view person) {
  auto* file = existing();
  return file == nullptr ? Tags() : file->tags(manager, person);
}

TagStore::Tags TagStore::visible(std::string_view manager, std::string_view person) {
  auto tags = written(manager, person);
  for (const auto* hold : holds_) tags = hold->tags_.over(manager, person, std::move(tags));
  return tags;
}

TagStore::Tags TagStore::beforeEdit(std::string_view manager, std::string_view person) {
  return TagHold::isOnThread() ? visible(manager, person) : written(manager, person);
}

TagStore::Tags TagStore::tags(std::string_view manager, std::string_view person) {
  const std::lock_guard lock(mutex_);
  return visible(manager, person);
}

void TagStore::add(std::string_view manager, std::string_view person, std::string_view tag) {
  const std::lock_guard lock(mutex_);
  auto* hold = TagHold::current();
  if (hold == nullptr) {
    existingOrNew().add(manager, person, tag);
    unsynced_ = true;
    return;
  }
  const auto before = visible(manager, person);
  if (holds(before, tag)) return;
  auto after = before;
  after.emplace_back(tag);
  hold->tags_.change(manager, person, before, after);
}

// The edits below read first. A read takes no write lock, so that clearing what is clear already,
// as is done for each new person, stays cheap; and nothing is remembered here that another process
// could make untrue.

void TagStore::remove(std::string_view manager, std::string_view person, std::string_view tag) {
  const std::lock_guard lock(mutex_);
  const auto before = beforeEdit(manager, person);
  if (!holds(before, tag)) return;
  if (auto* hold = TagHold::current()) {
    auto after = before;
    std::erase(after, tag);
    hold->tags_.change(manager, person, before, after);
  } else {
    existingOrNew().remove(manager, person, tag);
    unsynced_ = true;
  }
}

void TagStore::replace(std::string_view manager, std::string_view person, const Tags& tags) {
  const std::lock_guard lock(mutex_);
  const auto before = beforeEdit(manager, person);
  if (before == tags) return;
  if (auto* hold = TagHold::current()) {
    hold->tags_.change(manager, person, before, tags);
  } else {
    existingOrNew().replace(manager, person, tags);
    unsynced_ = true;
  }
}

void TagStore::holdWithoutTags(std::string_view person) {
  const std::lock_guard lock(mutex_);
  auto* hold = TagHold::current();
  assert(hold != nullptr);
  std::set<std::string> managers;
  if (auto* file = existing()) {
    for (auto& manager : file->managersOf(person)) managers.insert(std::move(manager));
  }
  for (const auto* each : holds_) {
    for (auto& manager : each->tags_.managersOf(person)) managers.insert(std::move(manager));
  }
  for (const auto& manager : managers) {
    const auto before = visible(manager, person);
    if (!before.empty()) hold->tags_.change(manager, person, before, {});
  }
}

void TagStore::follow(std::string_view store, const std::vector<TagAct>& acts,
                      const TagFile::LastAct& lastAct) {
  const std::lock_guard lock(mutex_);
  if (acts.empty()) return;
  existingOrNew().follow(store, acts, lastAct);
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

void TagStore::makeAllDurable() {
  const std::lock_guard lock(mutex_);
  auto* file = existing();
  if (file == nullptr) return;
  file->sync();
  unsynced_ = false;
}

void TagStore::begin(TagHold& hold) {
  const std::lock_guard lock(mutex_);
  holds_.push_back(&hold);
}

void TagStore::end(TagHold& hold) {
  const std::lock_guard lock(mutex_);
  std::erase(holds_, &hold);
}

void TagStore::join(TagHold& hold, TagHold& outer) {
  const std::lock_guard lock(mutex_);
  outer.tags_.append(hold.tags_);
  hold.tags_.clear();
}

std::vector<TagChange> TagStore::changesOf(const TagHold* innermost) {
  const std::lock_guard lock(mutex_);
  HeldTags all;
  for (const auto* hold : holds_) {
    for (const auto* each = innermost; each != nullptr; each = each->outer_) {
      if (each == hold) all.append(hold->tags_);
    }
  }
  return all.changes();
}

void TagStore::forget(TagHold* innermost) {
  const std::lock_guard lock(mutex_);
  for (auto* hold = innermost; hold != nullptr; hold = hold->outer_) hold->tags_.clear();
}

}  // namespace ox
