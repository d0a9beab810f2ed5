#include "oxcontacts/output/persons_below.hpp"

#include <map>
#include <unordered_map>
#include <utility>

namespace ox::program {
namespace {

using Places = std::vector<std::size_t>;

// The groups that hold a person, and how many persons those very groups hold: most are in the same
// few, and are counted together.
std::map<Places, std::size_t> holdersOfPersons(const std::vector<NestedGroup>& groups) {
  std::unordered_map<RecordKey, Places> holders;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    for (const auto& person : groups[i].persons) holders[person].push_back(i);
  }
  std::map<Places, std::size_t> counted;
  for (auto& [person, places] : holders) ++counted[std::move(places)];
  return counted;
}

std::vector<Places> groupsAbove(const std::vector<NestedGroup>& groups) {
  std::vector<Places> above(groups.size());
  for (std::size_t i = 0; i < groups.size(); ++i) {
    for (const auto below : groups[i].subGroups) above[below].push_back(i);
  }
  return above;
}

}  // namespace

std::optional<std::vector<std::size_t>> personsBelow(const std::vector<NestedGroup>& groups,
                                                     std::size_t atMostSteps) {
  const auto above = groupsAbove(groups);
  std::vector<std::size_t> counts(groups.size());
  std::vector<std::size_t> seenIn(groups.size());  // the number of the round, from 1
  std::size_t round = 0;
  std::size_t steps = 0;
  for (auto& [holders, persons] : holdersOfPersons(groups)) {
    ++round;
    auto open = holders;
    while (!open.empty()) {
      const auto group = open.back();
      open.pop_back();
      if (std::exchange(seenIn[group], round) == round) continue;
      counts[group] += persons;
      steps += 1 + above[group].size();
      if (steps > atMostSteps) return std::nullopt;
      open.insert(open.end(), above[group].begin(), above[group].end());
    }
  }
  return counts;
}

}  // namespace ox::program
