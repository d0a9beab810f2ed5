// merge: two records of one person become one; move: persons into another book.
#include <iostream>

#include "ox/OxMacAddressBookSDK/admin/stored_names.hpp"
#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/OxMacAddressBookSDK/persons/merge_persons.hpp"
#include "ox/OxMacAddressBookSDK/registry/person_book.hpp"
#include "ox/base/failures.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/name_and_id.hpp"
#include "oxcontacts/output/person_json.hpp"
#include "oxcontacts/output/progress_bar.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string person;
  std::string other;
  bool dryRun = false;
};

std::string titleOf(PropertyId property) {
  if (property == property_id::kUnmodelledLines) return "Other line of the card";
  return propertyTitleOfStored(property_table::nameOf(property));
}

// What the person gains, a row each.
std::vector<std::vector<std::string>> gains(const PersonMerge& merge) {
  std::vector<std::vector<std::string>> rows;
  for (const auto& added : merge.values.added) {
    if (added.by == JoinedBy::None) continue;
    rows.push_back(
        {titleOf(added.property), added.by == JoinedBy::Note ? "in the note" : "", added.text});
  }
  if (merge.takesPicture) rows.push_back({"Picture", "", ""});
  for (const auto& tag : merge.tags) rows.push_back({"Tag", "", tag});
  for (const auto& group : merge.groups) {
    rows.push_back({"Group", "", group->displayName().value_or("")});
  }
  return rows;
}

// What only the other record holds, which is in the trash then.
std::vector<std::vector<std::string>> losses(const PersonMerge& merge) {
  std::vector<std::vector<std::string>> rows;
  for (const auto& left : merge.values.added) {
    if (left.by == JoinedBy::None) {
      rows.push_back({"Label of " + titleOf(left.property), "left behind", left.text});
    }
  }
  if (merge.leavesPicture) rows.push_back({"Picture", "left behind", "each has one"});
  for (const auto& group : merge.groupsLeft) {
    rows.push_back(
        {"Group", "left behind", group->displayName().value_or("") + ", of another book"});
  }
  return rows;
}

Json rowsJson(const std::vector<std::vector<std::string>>& rows) {
  Json list = Json::array();
  for (const auto& row : rows) {
    list.push_back({{"property", row[0]}, {"how", row[1]}, {"value", row[2]}});
  }
  return list;
}

void printPlan(const Context& context, const PersonMerge& merge) {
  auto rows = gains(merge);
  for (auto& row : losses(merge)) rows.push_back(std::move(row));
  if (rows.empty()) {
    context.tell("the other record holds nothing that this one does not hold");
    return;
  }
  Table table({{"GAINS"}, {""}, {"VALUE"}});
  for (auto& row : rows) table.addRow(std::move(row));
  table.print(context);
}

void mergePersons(const Context& context, const Arguments& arguments) {
  const auto person = findPerson(context, arguments.person);
  const auto other = findPerson(context, arguments.other);
  if (person->key() == other->key()) {
    throw CommandError(kUsage, "\"" + arguments.person + "\" and \"" + arguments.other +
                                   "\" are the same record: " + nameAndId(*person));
  }
  const WholeAct act;
  const failures::Watch watch;
  const auto merge = mergeOf(*person, *other);
  // What could not be read would be lost.
  if (watch.hasFailures()) giveUp(watch);
  const auto name = nameAndId(*person);
  const auto otherName = nameAndId(*other);
  Json json = {{"gains", rowsJson(gains(merge))}, {"leaves", rowsJson(losses(merge))}};
  if (!arguments.dryRun) {
    if (!mergeInto(*person, other, merge) || !watch.isClear()) giveUp(watch);
    if (!saveEdits()) return;
    json["person"] = personJson(*person);
  }
  if (context.json) {
    printJson(json);
    return;
  }
  printPlan(context, merge);
  context.tell((arguments.dryRun ? "would merge " : "merged ") + otherName + " into " + name +
               (arguments.dryRun ? "" : "; `undo` takes it back"));
}

void movePersons(const Context& context, const std::vector<std::string>& names,
                 const std::string& bookName) {
  const auto persons = findPersons(context, names);
  const auto book = findBook(discoveredBooks(context), bookName);
  Persons moved;
  std::vector<std::string> left;
  {
    const WholeAct act;
    ProgressBar bar(context, "moving");
    std::size_t done = 0;
    for (const auto& person : persons) {
      ++done;
      if (person->addressBookID() == book->ID()) continue;  // is there
      const failures::Watch watch;
      for (const auto& group : person->groups()) {
        left.push_back(person->displayName().value_or("") + " leaves the group " +
                       group->displayName().value_or(""));
      }
      auto there = moveInto(*book, person);
      if (!there || !watch.isClear()) giveUp(watch);
      moved.push_back(std::move(there));
      bar.show(100.0 * static_cast<double>(done) / static_cast<double>(persons.size()));
    }
    if (!moved.empty() && !saveEdits()) return;
  }
  for (const auto& line : left) context.tell(line);
  // A book that held nobody is known from now on, and with it her tags.
  for (const auto& person : moved) makeBookOf(*person);
  if (context.json) {
    JsonList list;
    for (const auto& person : moved) list.add(personJson(*person));
    return list.close();
  }
  for (const auto& person : moved) {
    context.tell("moved " + nameAndId(*person) + " to " + book->name().value_or(""));
  }
  if (moved.empty()) context.tell("everybody is in " + book->name().value_or("") + " already");
}

}  // namespace

void declareMerge(CLI::App& program, const Context& context) {
  auto* merge = program.add_subcommand(
      "merge", "Make one person of two records: the first takes in what only the other holds");
  const auto arguments = std::make_shared<Arguments>();
  merge->add_option("PERSON", arguments->person, "Who stays")->required();
  merge->add_option("OTHER", arguments->other, "The other record, which goes into the trash")
      ->required();
  merge->add_flag("--dry-run", arguments->dryRun, "Show what would be gained and change nothing");
  merge->callback([&context, arguments] { mergePersons(context, *arguments); });

  auto* move = program.add_subcommand("move", "Move persons into another book, with their tags");
  const auto names = std::make_shared<std::vector<std::string>>();
  const auto book = std::make_shared<std::string>();
  move->add_option("PERSON", *names, "Who")->required();
  move->add_option("--to", *book, "Where")->type_name("BOOK")->required();
  move->callback([&context, names, book] { movePersons(context, *names, *book); });
}

}  // namespace ox::program
