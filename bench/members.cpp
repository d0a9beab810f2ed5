// Does the work on a group's members grow with their number alone? All persons of a book are added
// to one group and removed again, each with its save, and a tree of groups that holds all of them
// is flattened. Beside it: SQLite alone writing and reading the same memberships.
#include <algorithm>
#include <map>
#include <stdexcept>
#include <string_view>

#include "bench/child.hpp"
#include "bench/figures.hpp"
#include "bench/plain_edits.hpp"
#include "bench/stores.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/base/store_location.hpp"

namespace ox::bench {
namespace {

constexpr std::size_t kMembersOfGroup = 100;
constexpr std::size_t kSubgroups = 10;

struct Measure {
  double seconds = 0;
  std::size_t members = 0;  // found when it was done
};

std::shared_ptr<OxMacAddressBook> book() {
  return OxMacAddressBook::addressBookArray().element(0);
}

Persons everybody(OxMacAddressBook& book) {
  return book.allPersons()->snapshot();
}

Measure addAll() {
  const auto all = book();
  const auto persons = everybody(*all);
  const auto group = all->newGroup();
  const Stopwatch watch;
  group->addPersons(persons);
  all->save();
  const auto seconds = watch.seconds();
  return {seconds, group->persons().size()};
}

Measure removeAll() {
  const auto all = book();
  const auto persons = everybody(*all);
  const auto group = all->newGroup();
  group->addPersons(persons);
  all->save();
  const auto before = group->persons().size();
  const Stopwatch watch;
  group->removePersonsFromThisGroup(persons);
  all->save();
  const auto seconds = watch.seconds();
  return {seconds, before - group->persons().size()};
}

// A hundred members a group, ten sub-groups a group.
Measure makeTree() {
  const auto all = book();
  const auto persons = everybody(*all);
  std::vector<std::shared_ptr<_ABGroup>> groups;
  const Stopwatch watch;
  for (std::size_t i = 0; i * kMembersOfGroup < persons.size(); ++i) {
    groups.push_back(recordOf(all->newGroup()));
    if (i > 0) groups[(i - 1) / kSubgroups]->addSubgroup(groups.back());
    const auto end = std::min((i + 1) * kMembersOfGroup, persons.size());
    groups.back()->addPersons({persons.begin() + static_cast<std::ptrdiff_t>(i * kMembersOfGroup),
                               persons.begin() + static_cast<std::ptrdiff_t>(end)});
  }
  all->save();
  const auto seconds = watch.seconds();
  return {seconds, groups.front()->includePersons().size()};
}

Measure flatten(bool again) {
  const auto all = book();
  const auto root = all->rootGroups().at(0);
  if (again) root->includePersons();
  const Stopwatch watch;
  const auto persons = root->includePersons();
  const auto seconds = watch.seconds();
  return {seconds, persons.size()};
}

Measure measure(std::string_view way, std::size_t size) {
  if (way == "add") return addAll();
  if (way == "remove") return removeAll();
  if (way == "tree") return makeTree();
  if (way == "flatten") return flatten(false);
  if (way == "again") return flatten(true);
  const auto store = contactStorePath();
  if (way == "plain add") return {plain::addLinks(store), size};
  if (way == "plain remove") return {plain::removeLinks(store), size};
  if (way == "plain list") return {plain::listLinks(store, size), size};
  throw std::invalid_argument("no such way");
}

Measured inChild(const std::string& store, const std::string& way, std::size_t size) {
  const auto numbers = runChild(store, {way, std::to_string(size)});
  if (numbers.at("members") != static_cast<double>(size)) {
    throw std::runtime_error(way + ": not all members");
  }
  return measuredBy(numbers);
}

Way onCopy(const std::string& name, const std::string& way) {
  return {name, [way](std::size_t size) { return inChild(copyOf(localStoreOf(size)), way, size); }};
}

const std::string& treeOf(std::size_t size) {
  static auto& trees = *new std::map<std::size_t, std::string>;
  auto& path = trees[size];
  if (path.empty()) {
    const auto made = copyOf(localStoreOf(size));
    inChild(made, "tree", size);
    path = temporaryPath("tree-" + std::to_string(size) + ".db");
    moveStore(made, path);
  }
  return path;
}

Way onTree(const std::string& name, const std::string& way) {
  return {name, [way](std::size_t size) { return inChild(treeOf(size), way, size); }};
}

}  // namespace
}  // namespace ox::bench

int main(int argc, char** argv) {
  using namespace ox::bench;
  if (argc == 4 && std::string_view(argv[1]) == "--child") {
    const auto [seconds, members] = measure(argv[2], std::stoul(argv[3]));
    tellSeconds(seconds);
    tellParent("members", static_cast<double>(members));
    return 0;
  }
  return runFigures(argc, argv, [] {
    addFigure("add all to a group",
              {onCopy("addPersons, save", "add"), onCopy("plain SQLite", "plain add")});
    addFigure("remove all from a group", {onCopy("removePersonsFromThisGroup", "remove"),
                                          onCopy("plain SQLite", "plain remove")});
    addFigure("flatten a tree of groups",
              {onTree("includePersons", "flatten"), onTree("the same again", "again"),
               onTree("plain SQLite", "plain list")});
  });
}
