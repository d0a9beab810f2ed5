#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "ox/base/record_key.hpp"

namespace ox {

// A hash table from record keys to small values, kept slim because a table may hold a million
// records: one flat array, at least half full once it has grown. Not locked; a moved-from Value
// must be cheap to destroy.
template <typename Value>
class RecordHashTable {
 public:
  std::size_t size() const { return size_; }

  // Makes room for that many entries altogether.
  void reserve(std::size_t count) {
    if (count * 5 > slots_.size() * 4) resize(count * 5 / 4 + 1);
  }

  // Borrowed until the next change; null when the key is not there.
  const Value* find(const RecordKey& key) const {
    if (slots_.empty()) return nullptr;
    for (std::size_t i = homeOf(key);; i = next(i)) {
      if (slots_[i].key.isNone()) return nullptr;
      if (slots_[i].key == key) return &slots_[i].value;
    }
  }

  // The value under the key, made from `value` when the key was not there. Borrowed likewise. The
  // key that stands for no record is refused with null.
  Value* insert(const RecordKey& key, Value value) {
    if (key.isNone()) return nullptr;
    if ((size_ + 1) * 5 > slots_.size() * 4) grow();
    Slot& slot = slotFor(key);
    if (slot.key.isNone()) {
      slot = Slot{key, std::move(value)};
      ++size_;
    }
    return &slot.value;
  }

  void erase(const RecordKey& key) {
    if (slots_.empty() || key.isNone()) return;
    Slot* const slot = &slotFor(key);
    if (slot->key.isNone()) return;
    closeGap(static_cast<std::size_t>(slot - slots_.data()));
    --size_;
  }

 private:
  struct Slot {
    RecordKey key;  // none: free
    Value value{};
  };

  static constexpr std::size_t kFirstCapacity = 16;

  std::size_t next(std::size_t index) const { return index + 1 == slots_.size() ? 0 : index + 1; }

  // Where the search for a key begins: its hash scaled to the capacity, which need not be a power
  // of two.
  std::size_t homeOf(const RecordKey& key) const {
    const auto high = static_cast<std::uint64_t>(key.hash()) >> 32U;
    return static_cast<std::size_t>((high * slots_.size()) >> 32U);
  }

  // The slot that holds the key, or the free one where it belongs.
  Slot& slotFor(const RecordKey& key) {
    std::size_t i = homeOf(key);
    while (!slots_[i].key.isNone() && slots_[i].key != key) i = next(i);
    return slots_[i];
  }

  // Four fifths full at most before, half full after: small steps keep the spare room small.
  void grow() { resize(slots_.empty() ? kFirstCapacity : slots_.size() + slots_.size() * 3 / 5); }

  void resize(std::size_t capacity) {
    std::vector<Slot> old(capacity);
    old.swap(slots_);
    for (auto& slot : old) {
      if (!slot.key.isNone()) slotFor(slot.key) = std::move(slot);
    }
  }

  // Frees the slot and moves back every later entry of the run that the gap would cut off from its
  // home.
  void closeGap(std::size_t gap) {
    for (std::size_t i = next(gap); !slots_[i].key.isNone(); i = next(i)) {
      const std::size_t home = homeOf(slots_[i].key);
      const bool homeAfterGap = gap <= i ? (gap < home && home <= i) : (gap < home || home <= i);
      if (homeAfterGap) continue;
      slots_[gap] = std::move(slots_[i]);
      gap = i;
    }
    slots_[gap] = Slot{};
  }

  std::vector<Slot> slots_;
  std::size_t size_ = 0;
};

}  // namespace ox
