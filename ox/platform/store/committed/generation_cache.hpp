#pragma once

#include <cassert>
#include <cstddef>
#include <unordered_map>
#include <utility>

namespace ox {

// A bounded cache that keeps what was used lately: two halves, and when the young one is full the
// old one is forgotten. What is found in the old half moves to the young one, so whatever was used
// since the halves last changed places survives, and no list of uses has to be kept in order at
// each look-up. Costs are in whatever unit the owner counts (bytes, elements); both halves together
// cost at most twice the half's, but that a single value above it is still taken.
template <typename Key, typename Value>
class GenerationCache {
 public:
  explicit GenerationCache(std::size_t halfCost) : halfCost_(halfCost) { assert(halfCost > 0); }

  // Null when it is not there. Borrowed until the next put or clear.
  const Value* find(const Key& key) {
    const auto young = young_.find(key);
    if (young != young_.end()) return &young->second.first;
    const auto old = old_.find(key);
    if (old == old_.end()) return nullptr;
    auto entry = std::move(old->second);
    old_.erase(old);
    return put(key, std::move(entry.first), entry.second);
  }

  const Value* put(const Key& key, Value value, std::size_t cost) {
    if (cost_ + cost > halfCost_ && !young_.empty()) {
      old_ = std::exchange(young_, {});
      young_.reserve(old_.size());
      cost_ = 0;
    }
    cost_ += cost;
    return &(young_.insert_or_assign(key, std::pair(std::move(value), cost)).first->second.first);
  }

  bool empty() const { return young_.empty() && old_.empty(); }

  void erase(const Key& key) {
    young_.erase(key);
    old_.erase(key);
  }

  void clear() {
    young_.clear();
    old_.clear();
    cost_ = 0;
  }

 private:
  using Entries = std::unordered_map<Key, std::pair<Value, std::size_t>>;

  std::size_t halfCost_;
  std::size_t cost_ = 0;
  Entries young_;
  Entries old_;
};

}  // namespace ox
