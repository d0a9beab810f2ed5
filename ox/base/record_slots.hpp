#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "ox/base/record_key.hpp"

namespace ox {

// The hash table under every table of records: open addressing over one flat array, kept slim
// because a table may hold a million of them. What a slot holds is its owner's affair (a key with a
// value, a pointer to a record, a place in a list), and so `Rules` tells which record it stands
// for:
//
//   static constexpr std::size_t kFullPercent   how full the array may be; less where keys stand
//                                               elsewhere, since each slot passed is then a visit
//   bool isFree(const Slot&) const              true of Slot{}
//   RecordKey keyOf(const Slot&) const          of a slot that is not free; by value or by
//   reference
//
// Rules are handed to each call, so that they may refer to their owner. Not locked.
template <typename Slot, typename Rules>
class RecordSlots {
 public:
  std::size_t size() const { return size_; }

  // Makes room for that many records altogether.
  void reserve(std::size_t count, const Rules& rules) {
    if (isTooFullFor(count)) resize(count * 100 / Rules::kFullPercent + 1, rules);
  }

  // Makes room for one more record, so that the next claim cannot fail.
  void makeRoom(const Rules& rules) {
    if (isTooFullFor(size_ + 1)) resize(grown(), rules);
  }

  // Null when the record is not there. Borrowed until the next change.
  const Slot* find(const RecordKey& key, const Rules& rules) const {
    if (slots_.empty()) return nullptr;
    const Slot& slot = slots_[indexOf(key, rules)];
    return rules.isFree(slot) ? nullptr : &slot;
  }

  // The slot of that record, borrowed until the next change. True: it is new and free, counts from
  // now on, and is to be filled at once.
  std::pair<Slot*, bool> claim(const RecordKey& key, const Rules& rules) {
    assert(!key.isNone());
    makeRoom(rules);
    Slot& slot = slots_[indexOf(key, rules)];
    const bool isNew = rules.isFree(slot);
    if (isNew) ++size_;
    assert(size_ < slots_.size());  // a search ends at a free slot
    return {&slot, isNew};
  }

  // Frees a slot that find has given, and moves back every later entry of the run that the gap
  // would cut off from where the search for it begins.
  void erase(const Slot* slot, const Rules& rules) {
    auto gap = static_cast<std::size_t>(slot - slots_.data());
    assert(gap < slots_.size() && !rules.isFree(*slot));
    for (std::size_t i = next(gap); !rules.isFree(slots_[i]); i = next(i)) {
      const std::size_t home = homeOf(rules.keyOf(slots_[i]));
      const bool homeAfterGap = gap <= i ? (gap < home && home <= i) : (gap < home || home <= i);
      if (homeAfterGap) continue;
      slots_[gap] = std::move(slots_[i]);
      gap = i;
    }
    slots_[gap] = Slot{};
    --size_;
  }

 private:
  static constexpr std::size_t kFirstCapacity = 16;

  bool isTooFullFor(std::size_t count) const {
    return count * 100 > slots_.size() * Rules::kFullPercent;
  }

  // Small steps keep the spare room small.
  std::size_t grown() const {
    return slots_.empty() ? kFirstCapacity : slots_.size() + slots_.size() * 3 / 5;
  }

  std::size_t next(std::size_t index) const { return index + 1 == slots_.size() ? 0 : index + 1; }

  // Where the search for a key begins: its hash scaled to the capacity, which need not be a power
  // of two.
  std::size_t homeOf(const RecordKey& key) const {
    const auto high = static_cast<std::uint64_t>(key.hash()) >> 32U;
    return static_cast<std::size_t>((high * slots_.size()) >> 32U);
  }

  // Of the slot that holds the key, or of the free one where it belongs.
  std::size_t indexOf(const RecordKey& key, const Rules& rules) const {
    std::size_t i = homeOf(key);
    while (!rules.isFree(slots_[i]) && rules.keyOf(slots_[i]) != key) i = next(i);
    return i;
  }

  void resize(std::size_t capacity, const Rules& rules) {
    assert(capacity > size_);
    std::vector<Slot> old(capacity);
    old.swap(slots_);
    for (auto& slot : old) {
      if (!rules.isFree(slot)) slots_[indexOf(rules.keyOf(slot), rules)] = std::move(slot);
    }
  }

  std::vector<Slot> slots_;
  std::size_t size_ = 0;
};

}  // namespace ox
