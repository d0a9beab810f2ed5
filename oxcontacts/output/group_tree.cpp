#include "oxcontacts/output/group_tree.hpp"

#include <algorithm>
#include <iostream>
#include <optional>
#include <sstream>
#include <unordered_map>

#include "oxcontacts/context.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/persons_below.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

constexpr std::size_t kDeepestIndent = 40;

constexpr std::size_t kMostSteps = 20'000'000;

// Groups with everything below them; each is asked once for what it holds.
class Forest {
 public:
  explicit Forest(const Groups& roots) {
    for (const auto& root : roots) roots_.push_back(placeOf(root));
    for (std::size_t i = 0; i < groups_.size(); ++i) {
      for (const auto& below : groups_[i]->subGroups()) {
        const auto host = recordOf(below);
        if (!host) continue;
        const auto place = placeOf(host);  // which may move the others
        nested_[i].subGroups.push_back(place);
      }
      for (const auto& member : groups_[i]->members()) nested_[i].persons.push_back(member->key());
    }
    counts_ = personsBelow(nested_, kMostSteps);
  }

  const std::vector<std::size_t>& roots() const { return roots_; }
  const std::vector<std::size_t>& subGroups(std::size_t place) const {
    return nested_[place].subGroups;
  }
  std::size_t size() const { return groups_.size(); }
  const _ABGroup& group(std::size_t place) const { return *groups_[place]; }
  std::size_t persons(std::size_t place) const { return nested_[place].persons.size(); }
  // Those of the groups below it too; missing when there is too much to count.
  std::optional<std::size_t> personsBelowToo(std::size_t place) const {
    return counts_ ? std::optional((*counts_)[place]) : std::nullopt;
  }

  void tellWhatIsNotCounted() const {
    if (counts_) return;
    Context::complain("how many persons the groups hold with their sub-groups is not told: the " +
                      counted(groups_.size(), "group") + " lie in one another in more than " +
                      std::to_string(kMostSteps) + " ways");
  }

 private:
  std::size_t placeOf(const Group& group) {
    const auto [place, isNew] = places_.emplace(group->key(), groups_.size());
    if (isNew) {
      groups_.push_back(group);
      nested_.emplace_back();
    }
    return place->second;
  }

  std::vector<std::size_t> roots_;
  Groups groups_;
  std::vector<NestedGroup> nested_;  // beside groups_
  std::unordered_map<RecordKey, std::size_t> places_;
  std::optional<std::vector<std::size_t>> counts_;
};

// Walks trees of groups without recursion, for they may be deep. A group that lies in several
// groups is opened once; wherever else it appears it shows no sub-groups.
template <typename Enter, typename Leave>
void walk(const Forest& forest, Enter enter, Leave leave) {
  struct Level {
    const std::vector<std::size_t>* groups;  // null: none
    std::size_t next = 0;
  };
  std::vector<bool> opened(forest.size());
  std::vector<Level> levels{{&forest.roots()}};
  while (!levels.empty()) {
    auto& level = levels.back();
    if (level.groups == nullptr || level.next == level.groups->size()) {
      levels.pop_back();
      if (!levels.empty()) leave();
      continue;
    }
    const auto place = (*level.groups)[level.next++];
    const bool isFirst = level.next == 1;
    enter(place, levels.size() - 1, isFirst);
    levels.push_back({opened[place] ? nullptr : &forest.subGroups(place)});
    opened[place] = true;
  }
}

Json namesOf(const _ABGroup& group) {
  return {{"ID", jsonOf(group.ID())},
          {"displayName", jsonOf(group.displayName())},
          {"addressBookID", jsonOf(group.addressBookID())}};
}

// Every group with what stands between its braces; the closing braces where its tree ends.
void writeJsonTrees(const Forest& forest, std::ostream& output) {
  walk(
      forest,
      [&](std::size_t place, std::size_t, bool isFirst) {
        const auto& group = forest.group(place);
        const auto below = forest.personsBelowToo(place);
        auto fields = namesOf(group);
        fields["persons"] = forest.persons(place);
        fields["includePersons"] = below ? Json(*below) : Json();
        auto text = oneLine(fields);
        text.pop_back();
        output << (isFirst ? "" : ",\n") << text << ",\"subGroups\":[";
      },
      [&] { output << "]}"; });
}

}  // namespace

void printJsonTree(const Groups& roots) {
  const Forest forest(roots);
  std::cout << (roots.empty() ? "[" : "[\n");
  writeJsonTrees(forest, std::cout);
  std::cout << "\n]\n";
  forest.tellWhatIsNotCounted();
}

std::string jsonOfGroup(const Group& group) {
  std::ostringstream text;
  writeJsonTrees(Forest({group}), text);
  text << '\n';
  return text.str();
}

std::string jsonOfGroupAlone(const Group& group) {
  return oneLine(namesOf(*group)) + '\n';
}

void printTree(const Groups& roots) {
  const Forest forest(roots);
  const BookNames books;
  walk(
      forest,
      [&](std::size_t place, std::size_t depth, bool) {
        const auto& group = forest.group(place);
        const auto below = forest.personsBelowToo(place);
        std::cout << std::string(2 * std::min(depth, kDeepestIndent), ' ')
                  << terminalText(group.displayName().value_or("")) << "  ("
                  << counted(forest.persons(place), "person") << ", "
                  << (below ? std::to_string(*below) : "not counted") << " with sub-groups, book "
                  << terminalText(books.nameOf(group.addressBookID())) << ")\n";
      },
      [] {});
  forest.tellWhatIsNotCounted();
}

}  // namespace ox::program
