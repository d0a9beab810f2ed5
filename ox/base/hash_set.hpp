#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ox {

// Hashes of things that were met: for whoever asks somebody else only about what may have been met
// before. One table without a node for each, so that millions take little memory. What comes from
// outside wants a keyed hash. Not locked.
class HashSet {
 public:
  // False when it is there already.
  bool insert(std::uint64_t hash) {
    if (size_ >= slots_.size() / 4 * 3) grow();
    auto& slot = slots_[placeOf(keyOf(hash))];
    if (slot != kFree) return false;
    slot = keyOf(hash);
    ++size_;
    return true;
  }

  bool contains(std::uint64_t hash) const {
    return size_ > 0 && slots_[placeOf(keyOf(hash))] != kFree;
  }

 private:
  static constexpr std::uint64_t kFree = 0;
  static constexpr std::size_t kFirstCapacity = 1024;

  static std::uint64_t keyOf(std::uint64_t hash) { return hash != kFree ? hash : 1; }

  // Of the key, or of the free slot where it belongs.
  std::size_t placeOf(std::uint64_t key) const {
    auto place = static_cast<std::size_t>(((key >> 32U) * slots_.size()) >> 32U);
    while (slots_[place] != kFree && slots_[place] != key) {
      place = place + 1 == slots_.size() ? 0 : place + 1;
    }
    return place;
  }

  void grow() {
    const auto old = std::exchange(
        slots_, std::vector<std::uint64_t>(slots_.empty() ? kFirstCapacity : slots_.size() * 2));
    for (const auto key : old) {
      if (key != kFree) slots_[placeOf(key)] = key;
    }
  }

  std::vector<std::uint64_t> slots_;
  std::size_t size_ = 0;
};

}  // namespace ox
