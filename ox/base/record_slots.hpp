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
//   static constexpr std::size_t kFullPercent   how full the array may be
//   RecordKey keyOf(const Slot&) const          by value or by reference
//
// Rules are handed to each call, so that they may refer to their owner. A byte of the hash stands
// beside each slot, all of them together: a search looks through those, which stay in the
// processor's cache where slots and keys do not, and visits nearly no key but the one it is for.
// Not locked.
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
    const auto i = indexOf(key, rules);
    return marks_[i] == kFree ? nullptr : &slots_[i];
  }

  // The slot of that record, borrowed until the next change. True: it is new, counts from now on,
  // and is to be filled at once.
  std::pair<Slot*, bool> claim(const RecordKey& key, const Rules& rules) {
    assert(!key.isNone());
    makeRoom(rules);
    const auto i = indexOf(key, rules);
    const bool isNew = marks_[i] == kFree;
    if (isNew) {
      marks_[i] = markOf(key.hash());
      ++size_;
    }
    assert(size_ < slots_.size());  // a search ends at a free slot
    return {&slots_[i], isNew};
  }

  // Frees a slot that find has given, and moves back every later entry of the run that the gap
  // would cut off from where the search for it begins.
  void erase(const Slot* slot, const Rules& rules) {
    auto gap = static_cast<std::size_t>(slot - slots_.data());
    assert(gap < slots_.size() && marks_[gap] != kFree);
    for (std::size_t i = next(gap); marks_[i] != kFree; i = next(i)) {
      const std::size_t home = homeOf(rules.keyOf(slots_[i]).hash());
      const bool homeAfterGap = gap <= i ? (gap < home && home <= i) : (gap < home || home <= i);
      if (homeAfterGap) continue;
      slots_[gap] = std::move(slots_[i]);
      marks_[gap] = marks_[i];
      gap = i;
    }
    slots_[gap] = Slot{};
    marks_[gap] = kFree;
    --size_;
  }

 private:
  using Mark = std::uint8_t;
  static constexpr Mark kFree = 0;
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
  std::size_t homeOf(std::size_t hash) const {
    const auto high = static_cast<std::uint64_t>(hash) >> 32U;
    return static_cast<std::size_t>((high * slots_.size()) >> 32U);
  }

  // Of the bits that do not tell the home.
  static Mark markOf(std::size_t hash) {
    const auto low = static_cast<Mark>(hash);
    return low != kFree ? low : Mark{1};
  }

  // Of the slot that holds the key, or of the free one where it belongs.
  std::size_t indexOf(const RecordKey& key, const Rules& rules) const {
    const auto hash = key.hash();
    const auto mark = markOf(hash);
    std::size_t i = homeOf(hash);
    while (marks_[i] != kFree && (marks_[i] != mark || rules.keyOf(slots_[i]) != key)) i = next(i);
    return i;
  }

  void resize(std::size_t capacity, const Rules& rules) {
    assert(capacity > size_);
    std::vector<Slot> slots(capacity);
    std::vector<Mark> marks(capacity, kFree);
    slots.swap(slots_);
    marks.swap(marks_);
    for (std::size_t old = 0; old < slots.size(); ++old) {
      if (marks[old] == kFree) continue;
      // No two slots hold one key, so that the next free one is its own.
      std::size_t i = homeOf(rules.keyOf(slots[old]).hash());
      while (marks_[i] != kFree) i = next(i);
      slots_[i] = std::move(slots[old]);
      marks_[i] = marks[old];
    }
  }

  std::vector<Slot> slots_;
  std::vector<Mark> marks_;  // of each slot
  std::size_t size_ = 0;
};

}  // namespace ox
