#pragma once

#include <cstdint>
#include <set>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/platform/store/file/store_file.hpp"

namespace ox {

// The groups in one another as they will be when an act is written, by row: as they stand in the
// file, without the links and groups that the act takes away, with the links that it adds. Borrows
// the file. Used by one thread at a time; throws StoreError.
class GroupTree {
 public:
  // Rows from `firstRow` on are of the act's own additions: what others have put there since the
  // act was begun is none of its groups.
  GroupTree(StoreFile& file, std::int64_t firstRow) : file_(file), firstRow_(firstRow) {}

  void addLink(std::int64_t group, std::int64_t subgroup);
  void removeLink(std::int64_t group, std::int64_t subgroup);
  void removeGroup(std::int64_t group);

  // Whether a link from the one to the other would put a group below itself.
  bool wouldCloseCircle(std::int64_t group, std::int64_t subgroup);

 private:
  using Rows = std::vector<std::int64_t>;

  Rows parents(std::int64_t row);
  Rows subgroups(std::int64_t row);
  bool isGone(std::int64_t group, std::int64_t subgroup) const;

  StoreFile& file_;
  std::int64_t firstRow_;
  std::unordered_map<std::int64_t, Rows> addedParents_;
  std::unordered_map<std::int64_t, Rows> addedSubgroups_;
  std::set<std::pair<std::int64_t, std::int64_t>> removedLinks_;  // group and sub-group
  std::unordered_set<std::int64_t> removedGroups_;
};

}  // namespace ox
