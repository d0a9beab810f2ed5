#include "ox/platform/store/unsaved/pending_values.hpp"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace ox {
namespace {

template <typename Values>
auto entryOf(Values& values, PropertyId property) {
  return std::find_if(values.begin(), values.end(),
                      [&](const auto& entry) { return entry.first == property; });
}

}  // namespace

RecordEdit& PendingValues::edit(const RecordKey& key, RecordKind kind) {
  const auto found = places_.find(key);
  if (found != places_.end()) return *found->second;
  auto& made = edits_.emplace_back();
  made.key = key;
  made.kind = kind;
  places_.emplace(key, std::prev(edits_.end()));
  assert(places_.size() == edits_.size());
  return made;
}

const RecordEdit* PendingValues::find(const RecordKey& key) const {
  const auto found = places_.find(key);
  return found == places_.end() ? nullptr : &*found->second;
}

void PendingValues::dropIfEmpty(const RecordKey& key) {
  const auto found = places_.find(key);
  if (found == places_.end() || !found->second->values.empty() || found->second->image) return;
  edits_.erase(found->second);
  places_.erase(found);
  assert(places_.size() == edits_.size());
}

const PropertyValue* PendingValues::value(const RecordKey& key, PropertyId property) const {
  const auto* changed = find(key);
  if (changed == nullptr) return nullptr;
  const auto entry = entryOf(changed->values, property);
  return entry == changed->values.end() ? nullptr : &entry->second;
}

void PendingValues::setValue(const RecordKey& key, RecordKind kind, PropertyId property,
                             PropertyValue value) {
  assert(!isRemoved(key) && property != 0);
  auto& changed = edit(key, kind);
  const auto entry = entryOf(changed.values, property);
  if (entry != changed.values.end()) {
    entry->second = std::move(value);
  } else {
    changed.values.emplace_back(property, std::move(value));
  }
}

void PendingValues::dropValue(const RecordKey& key, PropertyId property) {
  const auto found = places_.find(key);
  if (found == places_.end()) return;
  auto& values = found->second->values;
  const auto entry = entryOf(values, property);
  if (entry != values.end()) values.erase(entry);
  dropIfEmpty(key);
}

std::optional<Data> PendingValues::image(const RecordKey& key) const {
  const auto* changed = find(key);
  if (changed == nullptr || !changed->image) return std::nullopt;
  return changed->image->get();
}

void PendingValues::setImage(const RecordKey& key, RecordKind kind, Data image) {
  assert(!isRemoved(key));
  SpillableData kept(std::move(image), spill_);
  auto& changed = edit(key, kind).image;
  if (changed) changed->drop();
  changed = std::move(kept);
}

void PendingValues::dropImage(const RecordKey& key) {
  const auto found = places_.find(key);
  if (found == places_.end()) return;
  auto& image = found->second->image;
  if (image) image->drop();
  image.reset();
  dropIfEmpty(key);
}

void PendingValues::remove(const RecordKey& key) {
  assert(!key.isNone());
  if (removed_.insert(key).second) removals_.push_back(key);
  assert(removed_.size() == removals_.size());
}

std::vector<RecordEdit> PendingValues::edits() const {
  std::vector<RecordEdit> list;
  list.reserve(edits_.size());
  for (const auto& changed : edits_) {
    if (isRemoved(changed.key)) continue;
    list.push_back(changed);
  }
  return list;
}

void PendingValues::clear() {
  edits_.clear();
  places_.clear();
  removals_.clear();
  removed_.clear();
  spill_.clear();
}

}  // namespace ox
