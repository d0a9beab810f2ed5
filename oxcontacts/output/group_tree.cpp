#include "oxcontacts/output/group_tree.hpp"

#include <algorithm>
#include <iostream>
#include <sstream>
#include <unordered_set>

#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

constexpr std::size_t kDeepestIndent = 40;

Groups subGroupsOf(const _ABGroup& group) {
  Groups below;
  for (const auto& child : group.subGroups()) {
    if (auto host = recordOf(child)) below.push_back(std::move(host));
  }
  return below;
}

// Walks trees of groups without recursion, for they may be deep. A group that lies in several
// groups is opened once; wherever else it appears it shows no sub-groups.
template <typename Enter, typename Leave>
void walk(Groups roots, Enter enter, Leave leave) {
  struct Level {
    Groups groups;
    std::size_t next = 0;
  };
  std::unordered_set<RecordKey> opened;
  std::vector<Level> levels{{std::move(roots)}};
  while (!levels.empty()) {
    auto& level = levels.back();
    if (level.next == level.groups.size()) {
      levels.pop_back();
      if (!levels.empty()) leave();
      continue;
    }
    const auto group = level.groups[level.next++];
    const bool isFirst = level.next == 1;
    enter(*group, levels.size() - 1, isFirst);
    levels.push_back({opened.insert(group->key()).second ? subGroupsOf(*group) : Groups()});
  }
}

// Every group with what stands between its braces; the closing braces where its tree ends.
void writeJsonTrees(Groups roots, std::ostream& output) {
  walk(
      std::move(roots),
      [&](const _ABGroup& group, std::size_t, bool isFirst) {
        const Json fields = {{"ID", jsonOf(group.ID())},
                             {"displayName", jsonOf(group.displayName())},
                             {"addressBookID", jsonOf(group.addressBookID())},
                             {"persons", group.persons().size()},
                             {"includePersons", group.includePersonsCount()}};
        auto text = oneLine(fields);
        text.pop_back();
        output << (isFirst ? "" : ",\n") << text << ",\"subGroups\":[";
      },
      [&] { output << "]}"; });
}

}  // namespace

void printJsonTree(Groups roots) {
  const bool empty = roots.empty();
  std::cout << (empty ? "[" : "[\n");
  writeJsonTrees(std::move(roots), std::cout);
  std::cout << "\n]\n";
}

std::string jsonOfGroup(const Group& group) {
  std::ostringstream text;
  writeJsonTrees({group}, text);
  text << '\n';
  return text.str();
}

void printTree(Groups roots) {
  walk(
      std::move(roots),
      [](const _ABGroup& group, std::size_t depth, bool) {
        std::cout << std::string(2 * std::min(depth, kDeepestIndent), ' ')
                  << terminalText(group.displayName().value_or("")) << "  ("
                  << counted(group.persons().size(), "person") << ", "
                  << group.includePersonsCount() << " with sub-groups, book "
                  << group.addressBookID().value_or("") << ")\n";
      },
      [] {});
}

}  // namespace ox::program
