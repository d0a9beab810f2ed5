#include "ox/platform/store/committed/record_index.hpp"

#include <algorithm>
#include <utility>

namespace ox {
namespace {

constexpr std::size_t kFewestSlots = 64;

}  // namespace

void RecordIndex::reserve(std::size_t records) {
  entries_.reserve(records);
  std::size_t slots = kFewestSlots;
  while (slots * 3 < records * 4) slots *= 2;
  if (slots > slots_.size()) rehash(slots);
}

std::size_t RecordIndex::slotOf(const RecordKey& key) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = key.hash() & mask;
  while (slots_[slot] != 0 && entries_[slots_[slot] - 1].key != key) slot = (slot + 1) & mask;
  return slot;
}

void RecordIndex::rehash(std::size_t slots) {
  slots_.assign(slots, 0);
  used_ = 0;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    if (!entries_[i].alive) continue;
    slots_[slotOf(entries_[i].key)] = static_cast<std::uint32_t>(i + 1);
    ++used_;
  }
}

void RecordIndex::append(const Entry& entry) {
  if ((used_ + 1) * 4 > slots_.size() * 3) rehash(std::max(kFewestSlots, slots_.size() * 2));
  const std::size_t slot = slotOf(entry.key);
  if (slots_[slot] == 0) ++used_;
  entries_.push_back(entry);
  slots_[slot] = static_cast<std::uint32_t>(entries_.size());
  containers_[entry.container].push_back(static_cast<std::uint32_t>(entries_.size() - 1));
  ++alive_;
}

void RecordIndex::removeRow(std::int64_t row) {
  const auto found =
      std::lower_bound(entries_.begin(), entries_.end(), row,
                       [](const Entry& entry, std::int64_t wanted) { return entry.row < wanted; });
  if (found == entries_.end() || found->row != row || !found->alive) return;
  found->alive = false;
  --alive_;
  if (entries_.size() > kFewestSlots && alive_ < entries_.size() / 2) compact();
}

const RecordIndex::Entry* RecordIndex::find(const RecordKey& key) const {
  if (slots_.empty()) return nullptr;
  const auto position = slots_[slotOf(key)];
  if (position == 0 || !entries_[position - 1].alive) return nullptr;
  return &entries_[position - 1];
}

RecordKeys RecordIndex::all(RecordKind kind) const {
  RecordKeys keys;
  keys.reserve(alive_);
  for (const auto& entry : entries_) {
    if (entry.alive && entry.kind == kind) keys.push_back(entry.key);
  }
  return keys;
}

RecordKeys RecordIndex::inContainer(std::int32_t container, RecordKind kind) const {
  RecordKeys keys;
  const auto found = containers_.find(container);
  if (found == containers_.end()) return keys;
  keys.reserve(found->second.size());
  for (const auto position : found->second) {
    const auto& entry = entries_[position];
    if (entry.alive && entry.kind == kind) keys.push_back(entry.key);
  }
  return keys;
}

void RecordIndex::clear() {
  *this = RecordIndex();
}

void RecordIndex::compact() {
  std::vector<Entry> kept;
  kept.reserve(alive_);
  std::copy_if(entries_.begin(), entries_.end(), std::back_inserter(kept),
               [](const Entry& entry) { return entry.alive; });
  clear();
  reserve(kept.size());
  for (const auto& entry : kept) append(entry);
}

}  // namespace ox
