#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

#include "ox/records/property_bag.hpp"

namespace ox {

// Entries that wait to be found by what they say, each once, whatever their identifiers. Takes time
// by the entry and not by the pair. Borrows the entries that it is offered.
class EntryMatch {
 public:
  enum class By : std::uint8_t { LabelAndValue, Value };

  explicit EntryMatch(By by) : by_(by) {}

  void offer(const MultiEntry& entry, std::size_t place);
  // The place of the first one offered that is equal; it is not found again.
  std::optional<std::size_t> take(const MultiEntry& entry);

 private:
  struct Offer {
    const MultiEntry* entry;
    std::size_t place;
  };
  struct Offers {
    std::vector<Offer> list;
    std::size_t taken = 0;  // from the front
  };

  std::uint64_t keyOf(const MultiEntry& entry) const;
  bool isEqual(const MultiEntry& a, const MultiEntry& b) const;

  By by_;
  std::unordered_map<std::uint64_t, Offers> offers_;
};

}  // namespace ox
