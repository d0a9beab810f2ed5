#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "ox/base/text/keyed_hash.hpp"

namespace ox {

// Tags to be looked up, however many there are. Borrows them.
class TagSet {
 public:
  explicit TagSet(const std::vector<std::string>& tags) : tags_(tags.begin(), tags.end()) {}
  bool holds(std::string_view tag) const { return tags_.contains(tag); }

 private:
  std::unordered_set<std::string_view, KeyedHash> tags_;
};

}  // namespace ox
