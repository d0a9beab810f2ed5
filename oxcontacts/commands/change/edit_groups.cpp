// add-group, rename-group, remove-group.
#include <iostream>

#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/group_tree.hpp"

namespace ox::program {
namespace {

struct NewGroup {
  std::string book;
  std::string name;
  std::string under;
};

void tellGroup(const Context& context, const std::string& what, const Group& group) {
  if (context.json) {
    std::cout << jsonOfGroup(group);
  } else {
    context.tell(what + " (" + group->key().shortText() + ")");
  }
}

Group madeUnder(const Context& context, OxMacAddressBook& book, const std::string& parentName,
                const std::string& name) {
  const auto parent = findGroup(context, parentName);
  if (parent->addressBookID() != book.ID()) {
    throw CommandError(kFailed, "the group \"" + parentName + "\" is not in the book \"" +
                                    book.name().value_or("") + "\"");
  }
  if (!book.canCreateSubGroup()) {
    throw CommandError(kFailed,
                       "the book \"" + book.name().value_or("") + "\" takes no groups in groups");
  }
  return recordOf(parent->addSubGroupByName(name));
}

void addGroup(const Context& context, const NewGroup& arguments) {
  const auto book = findBook(discoveredBooks(context), arguments.book);
  if (!book->canCreateGroup()) {
    throw CommandError(kFailed, "the book \"" + book->name().value_or("") + "\" takes no groups");
  }
  const WholeAct act;
  const failures::Watch watch;
  const auto group = arguments.under.empty()
                         ? recordOf(book->addGroupByName(arguments.name))
                         : madeUnder(context, *book, arguments.under, arguments.name);
  if (!group) throw storeFailure("no group was added", watch);
  if (!watch.isClear()) giveUp(watch);  // its name or its place was refused
  if (saveEdits()) tellGroup(context, "added the group " + arguments.name, group);
}

void renameGroup(const Context& context, const std::string& name, const std::string& newName) {
  const auto group = findGroup(context, name);
  const failures::Watch watch;
  group->setDisplayName(newName);
  if (!watch.isClear()) giveUp(watch);
  if (saveEdits()) tellGroup(context, "renamed the group to " + newName, group);
}

// What is below a group would stay behind where nobody can tell what that is.
[[noreturn]] void refuseWithoutItsTree(const std::string& name, const failures::Watch& watch) {
  giveUp(watch, "nothing was removed, since what leads to the groups below " + name +
                    " cannot be read (--alone removes it without them)");
}

struct Removal {
  std::string group;
  bool alone = false;
};

void removeTree(const Group& group, const std::string& name) {
  const failures::Watch watch;
  const auto book = group->groupAddressBook();
  if (book) {
    book->removeGroup(group);
  } else {
    ABAddressBook::sharedAddressBook()->removeRecord(group);
  }
  const auto last = watch.last();
  if (last && last->kind == FailureKind::Corrupt) refuseWithoutItsTree(name, watch);
  giveUpHalfEdits(watch);
}

std::uint64_t countBelow(const Group& group, const std::string& name) {
  const failures::Watch watch;
  const auto groups = group->subGroupsCount();
  const auto last = watch.last();
  if (last && last->kind == FailureKind::Corrupt) refuseWithoutItsTree(name, watch);
  if (last) giveUp(watch);
  return groups;
}

void removeAlone(const Context& context, const Group& group, const std::string& name) {
  const auto json = context.json ? jsonOfGroupAlone(group) : "";
  const failures::Watch watch;
  ABAddressBook::sharedAddressBook()->removeRecord(group);
  giveUpHalfEdits(watch);
  saveEdits();
  std::cout << json;
  context.tell("removed the group " + name +
               "; no person was removed, and what was below it stays");
}

void removeGroup(const Context& context, const Removal& arguments) {
  const auto group = findGroup(context, arguments.group);
  discoveredBooks(context);
  const auto name = group->displayName().value_or("");
  if (arguments.alone) return removeAlone(context, group, name);
  const auto below = countBelow(group, name);
  const auto json = context.json ? jsonOfGroup(group) : "";
  removeTree(group, name);
  saveEdits();
  std::cout << json;
  context.tell("removed the group " + name + (below > 0 ? " and what was below it" : "") +
               "; no person was removed");
}

}  // namespace

void declareEditGroups(CLI::App& program, const Context& context) {
  auto* add = program.add_subcommand("add-group", "Add a group to a book");
  const auto group = std::make_shared<NewGroup>();
  add->add_option("BOOK", group->book, "Where")->required();
  add->add_option("NAME", group->name, "What it is called")->required();
  add->add_option("--under", group->under, "The group that it goes into")->type_name("GROUP");
  add->callback([&context, group] { addGroup(context, *group); });

  auto* rename = program.add_subcommand("rename-group", "Rename a group");
  const auto names = std::make_shared<std::pair<std::string, std::string>>();
  rename->add_option("GROUP", names->first, "Which")->required();
  rename->add_option("NAME", names->second, "What it is called from now on")->required();
  rename->callback([&context, names] { renameGroup(context, names->first, names->second); });

  auto* remove = program.add_subcommand("remove-group", "Remove a group and every group below it");
  const auto removal = std::make_shared<Removal>();
  remove->add_option("GROUP", removal->group, "Which")->required();
  remove->add_flag("--alone", removal->alone, "Only the group itself; those below it stay");
  remove->callback([&context, removal] { removeGroup(context, *removal); });
}

}  // namespace ox::program
