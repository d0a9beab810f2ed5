#include "ox/platform/store/committed/record_index.hpp"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

namespace ox {
namespace {

constexpr std::size_t kFewestToCompact = 64;

}  // namespace

void RecordIndex::reserve(std::size_t records) {
  // And a little more, so that the first record that is added does not move all of them.
  entries_.reserve(records + records / 8);
  // Twice the room, so that a look-up seldom visits the key of another record on its way.
  slots_.reserve(records + records / 2, rules());
}

void RecordIndex::append(const Entry& entry) {
  assert(!entry.key.isNone());
  slots_.makeRoom(rules());
  const auto place = static_cast<std::uint32_t>(entries_.size());
  entries_.push_back(entry);
  // A damaged file may hold a record twice: then one of both is found.
  *slots_.claim(entry.key, rules()).first = place;
  containers_[entry.container].push_back(place);
}

// The end where there is none, or it was removed.
std::vector<RecordIndex::Entry>::const_iterator RecordIndex::placeOf(std::int64_t row) const {
  const auto found = std::ranges::lower_bound(entries_, row, {}, &Entry::row);
  const bool isThere = found != entries_.end() && found->row == row && !found->key.isNone();
  return isThere ? found : entries_.end();
}

const RecordIndex::Entry* RecordIndex::inRow(std::int64_t row) const {
  const auto found = placeOf(row);
  return found != entries_.end() ? &*found : nullptr;
}

void RecordIndex::removeRow(std::int64_t row) {
  const auto place = placeOf(row);
  if (place == entries_.end()) return;
  const auto found = entries_.begin() + (place - entries_.cbegin());
  const auto* slot = slots_.find(found->key, rules());
  if (slot != nullptr && &entries_[*slot] == &*found) slots_.erase(slot, rules());
  found->key = RecordKey();
  if (entries_.size() > kFewestToCompact && size() < entries_.size() / 2) compact();
}

const RecordIndex::Entry* RecordIndex::find(const RecordKey& key) const {
  const auto next = found_ + 1;
  if (next < entries_.size() && entries_[next].key == key && !key.isNone()) {
    found_ = next;
    return &entries_[next];
  }
  const auto* slot = slots_.find(key, rules());
  if (slot == nullptr) return nullptr;
  found_ = *slot;
  return &entries_[found_];
}

RecordKeys RecordIndex::all(RecordKind kind) const {
  RecordKeys keys;
  keys.reserve(size());
  for (const auto& entry : entries_) {
    if (entry.kind == kind && !entry.key.isNone()) keys.push_back(entry.key);
  }
  return keys;
}

RecordKeys RecordIndex::inContainer(std::int32_t container, RecordKind kind) const {
  RecordKeys keys;
  const auto found = containers_.find(container);
  if (found == containers_.end()) return keys;
  keys.reserve(found->second.size());
  for (const auto place : found->second) {
    const auto& entry = entries_[place];
    assert(entry.container == container);
    if (entry.kind == kind && !entry.key.isNone()) keys.push_back(entry.key);
  }
  return keys;
}

void RecordIndex::clear() {
  entries_.clear();
  slots_ = {};
  containers_.clear();
}

// Removed records keep their place until more than half of all places are theirs, so that a removal
// costs the same however large the store is.
void RecordIndex::compact() {
  std::vector<Entry> left;
  left.reserve(size());
  std::copy_if(entries_.begin(), entries_.end(), std::back_inserter(left),
               [](const Entry& entry) { return !entry.key.isNone(); });
  clear();
  reserve(left.size());
  for (const auto& entry : left) append(entry);
}

}  // namespace ox
