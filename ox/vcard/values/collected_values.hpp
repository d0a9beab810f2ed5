#pragma once

#include <array>
#include <cassert>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ox/base/date.hpp"
#include "ox/records/property_bag.hpp"

namespace ox::vcard {

// A multi-value of which some lines have been read.
struct CollectedEntries {
  std::vector<MultiEntry> entries;                      // numbered 1, 2, 3...
  std::size_t primary = 0;                              // entry number; 0 is none
  unsigned rank = 0;                                    // of the primary entry
  std::vector<std::pair<std::size_t, unsigned>> ranks;  // of entries that have one
};

// The values that the lines of a person's card have given so far.
class CollectedValues {
 public:
  // A single text; empty: missing.
  std::string& text(PropertyId property) {
    assert(property < texts_.size());
    return texts_[property];
  }
  std::optional<Date>& birthday() { return birthday_; }
  CollectedEntries& multi(PropertyId property) {
    assert(property >= property_id::kFirstMulti && property <= property_id::kLastMulti);
    return multis_[property - property_id::kFirstMulti];
  }

  void clear();
  // Leaves no value behind.
  void moveInto(PropertyBag& properties);

 private:
  std::array<std::string, property_id::kLastSingle + 1> texts_;
  std::optional<Date> birthday_;
  std::array<CollectedEntries, property_id::kLastMulti - property_id::kFirstMulti + 1> multis_;
};

}  // namespace ox::vcard
