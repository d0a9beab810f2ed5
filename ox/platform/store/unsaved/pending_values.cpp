#include "ox/platform/store/unsaved/pending_values.hpp"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace ox {
namespace {

template <typename Values>
auto changeBy(Values& values, ActId act, PropertyId property) {
  return std::find_if(values.begin(), values.end(), [&](const auto& change) {
    return change.act == act && change.property == property;
  });
}

template <typename Images>
auto imageBy(Images& images, ActId act) {
  return std::find_if(images.begin(), images.end(),
                      [&](const auto& change) { return change.act == act; });
}

// The latest change stands at the end.
template <typename List, typename Place>
void moveToEnd(List& list, Place place) {
  std::rotate(place, std::next(place), list.end());
}

}  // namespace

PendingValues::Changed& PendingValues::changed(const RecordKey& key, RecordKind kind) {
  const auto found = places_.find(key);
  if (found != places_.end()) return *found->second;
  // In both or in none: the second step has nothing that could fail.
  decltype(edits_) made(1);
  made.front().key = key;
  made.front().kind = kind;
  places_.emplace(key, made.begin());
  edits_.splice(edits_.end(), made);
  assert(places_.size() == edits_.size());
  return edits_.back();
}

const PendingValues::Changed* PendingValues::find(const RecordKey& key) const {
  const auto found = places_.find(key);
  return found == places_.end() ? nullptr : &*found->second;
}

void PendingValues::dropIfEmpty(const RecordKey& key) {
  const auto found = places_.find(key);
  if (found == places_.end()) return;
  if (!found->second->values.empty() || !found->second->images.empty()) return;
  edits_.erase(found->second);
  places_.erase(found);
  assert(places_.size() == edits_.size());
}

const PropertyValue* PendingValues::value(const RecordKey& key, PropertyId property) const {
  const auto* record = find(key);
  if (record == nullptr) return nullptr;
  const auto latest = std::find_if(record->values.rbegin(), record->values.rend(),
                                   [&](const auto& each) { return each.property == property; });
  return latest == record->values.rend() ? nullptr : &latest->value;
}

std::vector<RecordKey> PendingValues::changedRecords() const {
  std::vector<RecordKey> keys;
  keys.reserve(edits_.size());
  for (const auto& record : edits_) keys.push_back(record.key);
  return keys;
}

std::vector<PropertyId> PendingValues::changedProperties(const RecordKey& key) const {
  std::vector<PropertyId> properties;
  if (const auto* record = find(key)) {
    for (const auto& change : record->values) properties.push_back(change.property);
  }
  return properties;
}

bool PendingValues::isChangedByOthers(ActId act, const RecordKey& key, PropertyId property) const {
  const auto* record = find(key);
  return record != nullptr &&
         std::any_of(record->values.begin(), record->values.end(), [&](const auto& each) {
           return each.property == property && each.act != act;
         });
}

void PendingValues::setValue(ActId act, const RecordKey& key, RecordKind kind, PropertyId property,
                             PropertyValue value, PropertyValue base) {
  assert(!isRemoved(key) && property != 0);
  auto& values = changed(key, kind).values;
  const auto own = changeBy(values, act, property);
  if (own != values.end()) {
    own->value = std::move(value);
    moveToEnd(values, own);
    return;
  }
  ValueChange change{property, act, std::move(value), nullptr};
  if (!isMissing(base)) change.base = std::make_unique<const PropertyValue>(std::move(base));
  values.push_back(std::move(change));
}

void PendingValues::dropValue(ActId act, const RecordKey& key, PropertyId property) {
  const auto found = places_.find(key);
  if (found == places_.end()) return;
  auto& values = found->second->values;
  const auto own = changeBy(values, act, property);
  if (own != values.end()) values.erase(own);
  dropIfEmpty(key);
}

std::optional<Data> PendingValues::image(const RecordKey& key) const {
  const auto* record = find(key);
  if (record == nullptr || record->images.empty()) return std::nullopt;
  return record->images.back().data.get();
}

bool PendingValues::isImageChangedByOthers(ActId act, const RecordKey& key) const {
  const auto* record = find(key);
  return record != nullptr && std::any_of(record->images.begin(), record->images.end(),
                                          [&](const auto& each) { return each.act != act; });
}

void PendingValues::setImage(ActId act, const RecordKey& key, RecordKind kind, Data image) {
  assert(!isRemoved(key));
  SpillableData kept(std::move(image), spill_);
  auto& images = changed(key, kind).images;
  const auto own = imageBy(images, act);
  if (own == images.end()) {
    images.push_back({act, std::move(kept)});
    return;
  }
  own->data.drop();
  own->data = std::move(kept);
  moveToEnd(images, own);
}

void PendingValues::dropImage(ActId act, const RecordKey& key) {
  const auto found = places_.find(key);
  if (found == places_.end()) return;
  auto& images = found->second->images;
  const auto own = imageBy(images, act);
  if (own == images.end()) return;
  own->data.drop();
  images.erase(own);
  dropIfEmpty(key);
}

void PendingValues::remove(ActId act, const RecordKey& key) {
  assert(!key.isNone());
  if (removed_.emplace(key, act).second) removals_.push_back(key);
  assert(removed_.size() == removals_.size());
}

void PendingValues::forgetRemovals(const std::vector<RecordKey>& keys) {
  for (const auto& key : keys) removed_.erase(key);
  std::erase_if(removals_, [this](const auto& key) { return !removed_.contains(key); });
  assert(removed_.size() == removals_.size());
}

bool PendingValues::isRemovedBy(const ActIds& acts, const RecordKey& key) const {
  const auto found = removed_.find(key);
  return found != removed_.end() && isAmong(acts, found->second);
}

bool PendingValues::isChangedBy(const Changed& changed, const ActIds& acts) {
  const auto isTheirs = [&](const auto& change) { return isAmong(acts, change.act); };
  return std::any_of(changed.values.begin(), changed.values.end(), isTheirs) ||
         std::any_of(changed.images.begin(), changed.images.end(), isTheirs);
}

// What these acts want together: of one property the latest of their values, and what was committed
// when the first of them changed it.
RecordEdit PendingValues::editOf(const Changed& changed, const ActIds& acts) {
  RecordEdit edit;
  edit.key = changed.key;
  edit.kind = changed.kind;
  edit.values.reserve(changed.values.size());
  for (const auto& change : changed.values) {
    if (!isAmong(acts, change.act)) continue;
    const auto earlier =
        std::find_if(edit.values.begin(), edit.values.end(),
                     [&](const auto& each) { return each.property == change.property; });
    if (earlier != edit.values.end()) {
      earlier->value = change.value;
    } else {
      edit.values.push_back(
          {change.property, change.value, change.base ? *change.base : PropertyValue()});
    }
  }
  for (const auto& change : changed.images) {
    if (isAmong(acts, change.act)) edit.image = change.data;
  }
  return edit;
}

std::vector<RecordEdit> PendingValues::edits(const ActIds& acts) const {
  std::vector<RecordEdit> list;
  for (const auto& each : edits_) {
    if (isChangedBy(each, acts) && !isRemovedBy(acts, each.key)) {
      list.push_back(editOf(each, acts));
    }
  }
  return list;
}

std::vector<RecordKey> PendingValues::removals(const ActIds& acts) const {
  std::vector<RecordKey> list;
  for (const auto& key : removals_) {
    if (isRemovedBy(acts, key)) list.push_back(key);
  }
  return list;
}

bool PendingValues::clear(const ActIds& acts) noexcept {
  for (auto record = edits_.begin(); record != edits_.end();) {
    std::erase_if(record->values, [&](const auto& change) { return isAmong(acts, change.act); });
    std::erase_if(record->images, [&](const auto& change) {
      if (!isAmong(acts, change.act)) return false;
      change.data.drop();
      return true;
    });
    const auto next = std::next(record);
    if (record->values.empty() && record->images.empty()) {
      places_.erase(record->key);
      edits_.erase(record);
    }
    record = next;
  }
  const auto unremoved =
      std::erase_if(removals_, [&](const auto& key) { return isRemovedBy(acts, key); });
  std::erase_if(removed_, [&](const auto& each) { return isAmong(acts, each.second); });
  assert(removed_.size() == removals_.size() && places_.size() == edits_.size());
  if (edits_.empty()) spill_.clear();
  return unremoved != 0;
}

}  // namespace ox
