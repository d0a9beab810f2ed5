#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ox {

// Hashes of things that were met, four bytes each: for whoever asks somebody else only about what
// may have been met before. Of a million hashes one in four thousand that were never inserted is
// taken for one that was. What comes from outside wants a keyed hash. Not locked.
class HashSet {
 public:
  void insert(std::uint64_t hash) {
    if (size_ >= slots_.size() / 4 * 3) grow();
    auto& slot = slots_[placeOf(wordOf(hash))];
    if (slot == kFree) ++size_;
    slot = wordOf(hash);
  }

  bool contains(std::uint64_t hash) const {
    return size_ > 0 && slots_[placeOf(wordOf(hash))] != kFree;
  }

 private:
  static constexpr std::uint32_t kFree = 0;
  static constexpr std::size_t kFirstCapacity = 1024;

  static std::uint32_t wordOf(std::uint64_t hash) {
    const auto word = static_cast<std::uint32_t>(hash >> 32U);
    return word != kFree ? word : 1;
  }

  // Of the word, or of the free slot where it belongs: its search begins where it stands among all
  // words, which is the same after the table has grown.
  std::size_t placeOf(std::uint32_t word) const {
    auto place = static_cast<std::size_t>((std::uint64_t{word} * slots_.size()) >> 32U);
    while (slots_[place] != kFree && slots_[place] != word) {
      place = place + 1 == slots_.size() ? 0 : place + 1;
    }
    return place;
  }

  void grow() {
    const auto old = std::exchange(
        slots_, std::vector<std::uint32_t>(slots_.empty() ? kFirstCapacity : slots_.size() * 2));
    for (const auto word : old) {
      if (word != kFree) slots_[placeOf(word)] = word;
    }
  }

  std::vector<std::uint32_t> slots_;
  std::size_t size_ = 0;
};

}  // namespace ox
