#pragma once

#include <algorithm>
#include <cstddef>
#include <unordered_set>
#include <utility>
#include <vector>

namespace ox {

// The persons of a tree of groups: a group's members, then those of each sub-group in turn; of
// several occurrences of a person the last one counts. Linear in what the tree holds.
//
// Walked backwards (last sub-group first, a group's members after its sub-groups), the first
// occurrence is the one that counts; so a group met a second time has nothing to add, and a group
// that contains itself ends the walk instead of repeating it.
//
// membersOf(group) and subgroupsOf(group) give lists of shared pointers to records, which key()
// identifies.
template <typename Person, typename Group, typename MembersOf, typename SubgroupsOf>
std::vector<Person> flattenedPersons(const Group& root, MembersOf membersOf,
                                     SubgroupsOf subgroupsOf) {
  struct Visit {
    Group group;
    std::vector<Group> subgroups;  // those still to be walked
  };
  using Key = std::decay_t<decltype(root->key())>;
  std::unordered_set<Key> groupsMet;
  std::unordered_set<Key> personsMet;
  std::vector<Person> backwards;
  std::vector<Visit> open;
  const auto enter = [&](Group group) {
    if (!groupsMet.insert(group->key()).second) return;
    auto subgroups = subgroupsOf(group);
    open.push_back({std::move(group), std::move(subgroups)});
  };
  enter(root);
  while (!open.empty()) {
    if (!open.back().subgroups.empty()) {
      Group last = std::move(open.back().subgroups.back());
      open.back().subgroups.pop_back();
      enter(std::move(last));
      continue;
    }
    std::vector<Person> members = membersOf(open.back().group);
    open.pop_back();
    for (auto member = members.rbegin(); member != members.rend(); ++member) {
      if (personsMet.insert((*member)->key()).second) backwards.push_back(std::move(*member));
    }
  }
  std::reverse(backwards.begin(), backwards.end());
  return backwards;
}

}  // namespace ox
