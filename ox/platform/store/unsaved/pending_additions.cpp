#include "ox/platform/store/unsaved/pending_additions.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

namespace ox {

void PendingAdditions::add(ActId act, NewRecord& record, std::int32_t container) {
  assert(act != kNobodysAct && index_.find(record.key) == nullptr);
  assert(!record.encoded);  // what is still to be changed is no request made from the store
  if (!record.properties.empty() || record.image) {
    Content content;
    if (record.image) content.image.emplace(std::move(record.image), spill_);
    content.values = std::make_shared<const PropertyBag>(std::move(record.properties));
    contents_.insert_or_assign(record.key, std::move(content));
  }
  staged_.push_back({record.key, act});
  index_.append({record.key, static_cast<std::int64_t>(staged_.size()), container, record.kind});
}

ActId PendingAdditions::actOf(const RecordKey& key) const {
  const auto* entry = index_.find(key);
  assert(entry != nullptr);
  return staged_[static_cast<std::size_t>(entry->row) - 1].act;
}

const PendingAdditions::Content* PendingAdditions::contentOf(const RecordKey& key) const {
  const auto found = contents_.find(key);
  return found == contents_.end() ? nullptr : &found->second;
}

std::shared_ptr<const PropertyBag> PendingAdditions::values(const RecordKey& key) const {
  const auto* content = contentOf(key);
  return content != nullptr ? content->values : std::make_shared<const PropertyBag>();
}

Data PendingAdditions::image(const RecordKey& key) const {
  const auto* content = contentOf(key);
  return content != nullptr && content->image ? content->image->get() : nullptr;
}

RecordKeys PendingAdditions::recordsIn(std::int32_t container, RecordKind kind) const {
  return empty() ? RecordKeys() : index_.inContainer(container, kind);
}

RecordKeys PendingAdditions::recordsOf(const ActIds& acts) const {
  RecordKeys keys;
  for (const auto& each : staged_) {
    if (!each.key.isNone() && isAmong(acts, each.act)) keys.push_back(each.key);
  }
  return keys;
}

NewRecord PendingAdditions::recordToWrite(const RecordKey& key) const {
  const auto* entry = index_.find(key);
  assert(entry != nullptr);
  NewRecord record{key, entry->kind, {}, {}, nullptr};
  if (const auto* content = contentOf(key)) {
    record.properties = *content->values;
    record.spilledImage = content->image;
  }
  return record;
}

void PendingAdditions::clear(const ActIds& acts) {
  const bool isAnyLeft = std::any_of(staged_.begin(), staged_.end(), [&](const auto& each) {
    return !each.key.isNone() && !isAmong(acts, each.act);
  });
  if (!isAnyLeft) {
    index_.clear();
    staged_.clear();
    contents_.clear();
    spill_.clear();
    return;
  }
  for (std::size_t i = 0; i < staged_.size(); ++i) {
    const auto& staged = staged_[i];
    if (staged.key.isNone() || !isAmong(acts, staged.act)) continue;
    dropPlace(i);
  }
}

void PendingAdditions::drop(const RecordKey& key) {
  const auto* entry = index_.find(key);
  assert(entry != nullptr);
  dropPlace(static_cast<std::size_t>(entry->row) - 1);
}

void PendingAdditions::dropPlace(std::size_t place) {
  auto& staged = staged_[place];
  const auto content = contents_.find(staged.key);
  if (content != contents_.end()) {
    if (content->second.image) content->second.image->drop();
    contents_.erase(content);
  }
  index_.removeRow(static_cast<std::int64_t>(place) + 1);
  staged.key = RecordKey();
}

}  // namespace ox
