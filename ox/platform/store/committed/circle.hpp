#pragma once

#include <unordered_set>
#include <utility>
#include <vector>

namespace ox {

// Groups reached so far on one side of a link.
template <typename Key>
class GroupsReached {
 public:
  explicit GroupsReached(const Key& start) : met_{start}, open_{start} {}

  bool isDone() const { return open_.empty(); }
  // Goes one group further; true when that leads to the target.
  template <typename Neighbours>
  bool step(const Key& target, Neighbours neighbours) {
    const auto key = std::move(open_.back());
    open_.pop_back();
    for (const auto& next : neighbours(key)) {
      if (next == target) return true;
      if (met_.insert(next).second) open_.push_back(next);
    }
    return false;
  }

 private:
  std::unordered_set<Key> met_;
  std::vector<Key> open_;
};

// Whether putting the child below the group would put a group below itself. `parents` and
// `subgroups` answer a list of keys. Looks upwards and downwards in turns, so that the smaller side
// tells: a deep tree is built in linear time from either end.
template <typename Key, typename Parents, typename Subgroups>
bool closesCircle(const Key& group, const Key& child, Parents parents, Subgroups subgroups) {
  if (group == child) return true;
  GroupsReached<Key> above(group);
  GroupsReached<Key> below(child);
  while (!above.isDone() && !below.isDone()) {
    if (above.step(child, parents) || below.step(group, subgroups)) return true;
  }
  return false;
}

}  // namespace ox
