#include "ox/OxAddressBookSDK/tags/tag_store.hpp"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <set>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "ox/OxAddressBookSDK/tags/tag_set.hpp"
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

void TagStore::open(const std::string& path) {
  file_ = std::make_unique<TagFile>(path);
  if (std::exchange(openedBy_, ::getpid()) == 0) std::atexit(letGoAtExit);
}

// Neither while another thread uses it, nor in a process that was forked since it was opened.
void TagStore::letGoAtExit() {
  auto& store = shared();
  const std::unique_lock lock(store.mutex_, std::try_to_lock);
  if (lock && store.pins_ == 0 && store.openedBy_ == ::getpid()) store.file_.reset();
}

TagFile* TagStore::existing() {
  // One that another process has made since belongs to a later moment.
  if (!file_ && !(pins_ > 0 && pinnedWithoutFile_)) {
    settleStoreLocation();
    const auto path = tagStorePath();
    if (std::filesystem::exists(path)) open(path);
  }
  if (file_ && pins_ > 0) file_->stayAtMoment();
  return file_.get();
}

TagFile& TagStore::existingOrNew() {
  if (!file_) {
    settleStoreLocation();
    const auto path = tagStorePath();
    createPrivateFile(path);
    open(path);
  }
  return *file_;
}

TagStore::Views TagStore::views(std::string_view manager, std::string_view person) {
  Views views;
  if (auto* file = existing()) views.own = file->tags(manager, person);
  views.seen = views.own;
  for (const auto* hold : holds_) {
    views.seen = hold->tags_.over(manager, person, std::move(views.seen));
    if (!hold->isOnThisThread()) continue;
    views.own = hold->tags_.over(manager, person, std::move(views.own));
  }
  return views;
}

TagStore::Tags TagStore::tags(std::string_view manager, std::string_view person) {
  const std::lock_guard lock(mutex_);
  return views(manager, person).seen;
}

TagFile::TagsOfPersons TagStore::tagsUnder(std::string_view manager) {
  const std::lock_guard lock(mutex_);
  auto* file = existing();
  auto all = file != nullptr ? file->tagsUnder(manager) : TagFile::TagsOfPersons();
  for (const auto* hold : holds_) {
    for (const auto& person : hold->tags_.personsUnder(manager)) {
      auto& tags = all[person];
      tags = hold->tags_.over(manager, person, std::move(tags));
    }
  }
  std::erase_if(all, [](const auto& of) { return of.second.empty(); });
  return all;
}

bool TagStore::isEmpty() {
  const std::lock_guard lock(mutex_);
  auto* file = existing();
  return holds_.empty() && (file == nullptr || file->isEmpty());
}

void TagStore::add(std::string_view manager, std::string_view person, std::string_view tag) {
  const std::lock_guard lock(mutex_);
  auto* hold = TagHold::current();
  if (hold == nullptr) {
    existingOrNew().add(manager, person, tag);
    unsynced_ = true;
    return;
  }
  auto [before, own] = views(manager, person);
  if (holds(before, tag) && holds(own, tag)) return;
  std::erase(before, tag);
  auto after = before;
  after.emplace_back(tag);
  hold->tags_.change(manager, person, before, after);
}

// The edits below read first. A read takes no write lock, so that clearing what is clear already
// stays cheap; and nothing is remembered here that another process could make untrue.

void TagStore::remove(std::string_view manager, std::string_view person, std::string_view tag) {
  const std::lock_guard lock(mutex_);
  auto [before, own] = views(manager, person);
  if (auto* hold = TagHold::current()) {
    if (!holds(before, tag) && !holds(own, tag)) return;
    auto after = before;
    std::erase(after, tag);
    if (!holds(before, tag)) before.emplace_back(tag);
    hold->tags_.change(manager, person, before, after);
  } else if (holds(own, tag)) {
    existingOrNew().remove(manager, person, tag);
    unsynced_ = true;
  }
}

void TagStore::replace(std::string_view manager, std::string_view person, const Tags& tags) {
  const std::lock_guard lock(mutex_);
  const auto before = views(manager, person);
  if (TagHold::isOnThread()) {
    holdTags(manager, person, before, tags);
  } else if (before.own != tags) {
    existingOrNew().replace(manager, person, tags);
    unsynced_ = true;
  }
}

// A tag that only another thread holds is wanted by this one too when it is among those.
void TagStore::holdTags(std::string_view manager, std::string_view person, const Views& views,
                        const Tags& tags) {
  const auto& [seen, own] = views;
  if (seen == tags && own == tags) return;
  auto before = seen;
  if (own != seen) {
    const TagSet wanted(tags);
    const TagSet owned(own);
    const TagSet visible(seen);
    std::erase_if(before, [&](const auto& tag) { return wanted.holds(tag) && !owned.holds(tag); });
    for (const auto& tag : own) {
      if (!visible.holds(tag) && !wanted.holds(tag)) before.push_back(tag);
    }
  }
  TagHold::current()->tags_.change(manager, person, before, tags);
}

void TagStore::change(std::string_view manager, std::string_view person, const Tags& removed,
                      const Tags& added) {
  if (!TagHold::isOnThread()) {
    for (const auto& tag : removed) remove(manager, person, tag);
    for (const auto& tag : added) add(manager, person, tag);
    return;
  }
  const std::lock_guard lock(mutex_);
  const auto [seen, own] = views(manager, person);
  const TagSet visible(seen);
  const TagSet owned(own);
  const TagSet gone(removed);
  // One that only another thread holds is taken away, or added, by this one too.
  const auto isNew = [&](const auto& tag) { return !visible.holds(tag) || !owned.holds(tag); };
  Tags fresh;
  std::ranges::copy_if(added, std::back_inserter(fresh),
                       [&](const auto& tag) { return isNew(tag) || gone.holds(tag); });
  const TagSet appended(fresh);
  Tags before = seen;
  std::erase_if(before, [&](const auto& tag) { return appended.holds(tag) && isNew(tag); });
  Tags after = seen;
  std::erase_if(after, [&](const auto& tag) { return gone.holds(tag) || appended.holds(tag); });
  after.insert(after.end(), fresh.begin(), fresh.end());
  for (const auto& tag : removed) {
    if (!visible.holds(tag) && owned.holds(tag)) before.push_back(tag);
  }
  TagHold::current()->tags_.change(manager, person, before, after);
}

void TagStore::holdWithoutTags(std::string_view person) {
  const std::lock_guard lock(mutex_);
  assert(TagHold::isOnThread());
  std::set<std::string> managers;
  if (auto* file = existing()) {
    for (auto& manager : file->managersOf(person)) managers.insert(std::move(manager));
  }
  for (const auto* each : holds_) {
    for (auto& manager : each->tags_.managersOf(person)) managers.insert(std::move(manager));
  }
  for (const auto& manager : managers) holdTags(manager, person, views(manager, person), {});
}

void TagStore::follow(std::string_view store, const std::vector<TagAct>& acts,
                      const TagFile::LastAct& lastAct) {
  const std::lock_guard lock(mutex_);
  if (acts.empty()) return;
  existingOrNew().follow(store, acts, lastAct);
  unsynced_ = true;
}

std::int64_t TagStore::lastFollowed(std::string_view store) {
  const std::lock_guard lock(mutex_);
  auto* file = existing();
  return file == nullptr ? 0 : file->lastFollowed(store);
}

void TagStore::pinMoment() {
  const std::lock_guard lock(mutex_);
  if (pins_ == 0) {
    settleStoreLocation();
    // A place that cannot be looked at is told to whoever asks for tags.
    std::error_code error;
    pinnedWithoutFile_ = !file_ && !std::filesystem::exists(tagStorePath(), error) && !error;
  }
  ++pins_;
}

void TagStore::unpinMoment() {
  const std::lock_guard lock(mutex_);
  assert(pins_ > 0);
  if (--pins_ == 0 && file_) file_->leaveMoment();
}

void TagStore::leaveMoment() {
  const std::lock_guard lock(mutex_);
  pinnedWithoutFile_ = false;
  if (file_) file_->leaveMoment();
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

std::vector<TagChange> TagStore::changesOfThread() {
  const std::lock_guard lock(mutex_);
  HeldTags all;
  for (const auto* hold : holds_) {
    if (hold->isOnThisThread()) all.append(hold->tags_);
  }
  return all.changes();
}

void TagStore::forgetThoseOfThread() {
  const std::lock_guard lock(mutex_);
  for (auto* hold : holds_) {
    if (hold->isOnThisThread()) hold->tags_.clear();
  }
}

}  // namespace ox
