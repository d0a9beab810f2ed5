#pragma once

#include <cstddef>
#include <utility>

#include "ox/base/record_slots.hpp"

namespace ox {

// A hash table from record keys to small values. Not locked; a moved-from Value must be cheap to
// destroy.
template <typename Value>
class RecordHashTable {
 public:
  std::size_t size() const { return slots_.size(); }

  // Makes room for that many entries altogether.
  void reserve(std::size_t count) { slots_.reserve(count, Rules{}); }

  // Borrowed until the next change; null when the key is not there.
  const Value* find(const RecordKey& key) const {
    const Slot* const slot = slots_.find(key, Rules{});
    return slot == nullptr ? nullptr : &slot->value;
  }

  // The value under the key, made from `value` when the key was not there. Borrowed likewise. The
  // key that stands for no record is refused with null.
  Value* insert(const RecordKey& key, Value value) {
    if (key.isNone()) return nullptr;
    const auto [slot, isNew] = slots_.claim(key, Rules{});
    if (isNew) *slot = Slot{key, std::move(value)};
    return &slot->value;
  }

  void erase(const RecordKey& key) {
    if (const Slot* const slot = slots_.find(key, Rules{})) slots_.erase(slot, Rules{});
  }

 private:
  struct Slot {
    RecordKey key;
    Value value{};
  };

  struct Rules {
    static constexpr std::size_t kFullPercent = 80;
    const RecordKey& keyOf(const Slot& slot) const { return slot.key; }
  };

  RecordSlots<Slot, Rules> slots_;
};

}  // namespace ox
