#include "ox/OxMacAddressBookSDK/_ABGroup/flatten.hpp"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>

namespace ox {
namespace {

struct Node {
  explicit Node(std::size_t number) : number_(number) {}
  std::size_t key() const { return number_; }

  std::size_t number_;
  std::vector<std::shared_ptr<Node>> members;
  std::vector<std::shared_ptr<Node>> subgroups;
};
using NodePtr = std::shared_ptr<Node>;
using Nodes = std::vector<NodePtr>;

Nodes flattened(const NodePtr& root) {
  return flattenedPersons<NodePtr>(
      root, [](const NodePtr& group) { return group->members; },
      [](const NodePtr& group) { return group->subgroups; });
}

// The rule as it is defined: a sub-group's persons are taken out of the list and put at its end.
Nodes byDefinition(const NodePtr& group) {
  Nodes list = group->members;
  for (const auto& subgroup : group->subgroups) {
    const Nodes below = byDefinition(subgroup);
    std::erase_if(list, [&below](const NodePtr& person) {
      return std::find(below.begin(), below.end(), person) != below.end();
    });
    list.insert(list.end(), below.begin(), below.end());
  }
  return list;
}

std::string text(const Nodes& nodes) {
  std::string result;
  for (const auto& node : nodes) result += std::to_string(node->number_) + ' ';
  return result;
}

// Groups of which each may hold later ones, so that some have several parents and none is its own
// descendant.
Nodes randomGroups(std::mt19937& random, bool tree) {
  Nodes persons;
  for (std::size_t i = 0; i < 8; ++i) persons.push_back(std::make_shared<Node>(i));
  Nodes groups;
  const std::size_t count = 1 + random() % 9;
  for (std::size_t i = 0; i < count; ++i) {
    auto group = std::make_shared<Node>(i);
    Nodes shuffled = persons;
    std::shuffle(shuffled.begin(), shuffled.end(), random);
    shuffled.resize(random() % 6);
    group->members = shuffled;
    if (i > 0) groups[random() % i]->subgroups.push_back(group);
    if (!tree && i > 1) {
      auto& parent = groups[random() % i]->subgroups;
      if (std::find(parent.begin(), parent.end(), group) == parent.end()) parent.push_back(group);
    }
    groups.push_back(group);
  }
  return groups;
}

TEST(FlattenedPersons, AreThoseOfTheRecursiveDefinitionOnRandomTrees) {
  std::mt19937 random(20240517);
  for (int round = 0; round < 3000; ++round) {
    const auto root = randomGroups(random, round % 2 == 0).front();
    ASSERT_EQ(text(flattened(root)), text(byDefinition(root))) << "round " << round;
  }
}

TEST(FlattenedPersons, ManyPathsToOneGroupAreWalkedOnce) {
  // Each level holds the next one twice: 2^60 paths.
  const auto person = std::make_shared<Node>(1);
  auto below = std::make_shared<Node>(1000);
  below->members = {person};
  for (std::size_t level = 0; level < 60; ++level) {
    auto left = std::make_shared<Node>(level * 3);
    auto right = std::make_shared<Node>(level * 3 + 1);
    auto top = std::make_shared<Node>(level * 3 + 2);
    left->subgroups = right->subgroups = {below};
    top->subgroups = {left, right};
    below = top;
  }
  EXPECT_EQ(text(flattened(below)), "1 ");
}

TEST(FlattenedPersons, DeepTreesAndCirclesEnd) {
  const auto root = std::make_shared<Node>(0);
  auto deepest = root;
  for (std::size_t level = 1; level < 200000; ++level) {
    auto next = std::make_shared<Node>(level);
    deepest->subgroups = {next};
    deepest = next;
  }
  deepest->members = {std::make_shared<Node>(5)};
  deepest->subgroups = {root};
  EXPECT_EQ(text(flattened(root)), "5 ");
  // Taken apart from the top, or the shared pointers would recurse.
  for (auto group = root; group && !group->subgroups.empty();) {
    auto next = group->subgroups.front();
    group->subgroups.clear();
    group = next;
  }
}

}  // namespace
}  // namespace ox
