// group-add, group-remove: who is in a group.
#include <algorithm>
#include <iostream>
#include <unordered_set>

#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/group_tree.hpp"
#include "oxcontacts/output/progress_bar.hpp"

namespace ox::program {
namespace {

using Members = std::vector<std::shared_ptr<IOxPerson>>;

struct Arguments {
  std::string group;
  std::vector<std::string> persons;
  bool recursive = false;
};

void tellGroup(const Context& context, const std::string& what, const Group& group) {
  if (context.json) {
    std::cout << jsonOfGroup(group);
  } else {
    context.tell(what + group->displayName().value_or(""));
  }
}

// Records of different accounts cannot be linked: told before anything is changed. An account that
// cannot be asked for is not another one.
void refuseOtherAccounts(const _ABGroup& group, const Persons& persons) {
  const failures::Watch watch;
  for (const auto& person : persons) {
    if (person->AccountID() == group.AccountID()) continue;
    if (!watch.isClear()) giveUp(watch);
    throw CommandError(
        kFailed, person->displayName().value_or("") + " is in another account than the group " +
                     group.displayName().value_or("") + "; `copy` makes a person for its book");
  }
}

std::unordered_set<const IOxPerson*> heldBy(const Members& members) {
  std::unordered_set<const IOxPerson*> held;
  for (const auto& member : members) held.insert(member.get());
  return held;
}

void addMembers(const Context& context, const Arguments& arguments) {
  const auto group = findGroup(context, arguments.group);
  const auto persons = findPersons(context, arguments.persons);
  refuseOtherAccounts(*group, persons);
  const failures::Watch watch;
  const auto before = heldBy(group->persons());
  {
    ProgressBar bar(context, "adding to the group");
    group->addPersons_progress(Members(persons.begin(), persons.end()), bar.callback());
  }
  giveUpHalfEdits(watch);
  if (!saveEdits()) return;
  // Others may have put in, or taken out, somebody else meanwhile.
  const auto after = heldBy(group->persons());
  const auto added = std::ranges::count_if(persons, [&](const auto& person) {
    return after.contains(person.get()) && !before.contains(person.get());
  });
  tellGroup(context, "added " + counted(static_cast<std::size_t>(added), "person") + " to ", group);
}

// The persons that are in the group; the others are named to the user, where that can be told.
Members membersAmong(const Persons& persons, const _ABGroup& group, bool recursive) {
  const failures::Watch watch;
  const auto held = heldBy(recursive ? group.includePersons() : group.persons());
  giveUpHalfEdits(watch);
  Members members;
  for (const auto& person : persons) {
    if (held.contains(person.get())) {
      members.push_back(person);
    } else {
      Context::complain(person->displayName().value_or("") + " is not in the group " +
                        group.displayName().value_or(""));
    }
  }
  return members;
}

void removeMembers(const Context& context, const Arguments& arguments) {
  const auto group = findGroup(context, arguments.group);
  const auto persons = findPersons(context, arguments.persons);
  const failures::Watch watch;
  const auto members = membersAmong(persons, *group, arguments.recursive);
  if (arguments.recursive) {
    ProgressBar bar(context, "removing from the groups");
    group->removePersons_progress(members, bar.callback());
  } else {
    group->removePersonsFromThisGroup(members);
  }
  giveUpHalfEdits(watch);
  if (!saveEdits()) return;
  tellGroup(context, "removed " + counted(members.size(), "person") + " from ", group);
  if (members.size() < persons.size()) throw CommandError(kDoneWithRefusals, "");
}

CLI::App* declareMembers(CLI::App& program, const char* name, const char* what,
                         const std::shared_ptr<Arguments>& arguments) {
  auto* command = program.add_subcommand(name, what);
  command->add_option("GROUP", arguments->group, "Which")->required();
  command->add_option("PERSON", arguments->persons, "Who")->required();
  return command;
}

}  // namespace

void declareMembers(CLI::App& program, const Context& context) {
  const auto added = std::make_shared<Arguments>();
  declareMembers(program, "group-add", "Put persons of the same account into a group", added)
      ->callback([&context, added] { addMembers(context, *added); });

  const auto removed = std::make_shared<Arguments>();
  auto* remove = declareMembers(program, "group-remove", "Take persons out of a group", removed);
  remove->add_flag("--recursive", removed->recursive, "Out of the groups below it too");
  remove->callback([&context, removed] { removeMembers(context, *removed); });
}

}  // namespace ox::program
