// add-person, set, remove-person: each reads what is asked for, finds whom it means, edits, saves
// and tells.
#include <iostream>

#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/apply_assignments.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/name_and_id.hpp"
#include "oxcontacts/output/person_json.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string record;  // a book or a person
  std::vector<std::string> assignments;
};

std::string namesOf(const Persons& persons) {
  std::string names;
  for (const auto& person : persons) names += (names.empty() ? "" : ", ") + nameAndId(*person);
  return names;
}

void tellPerson(const Context& context, const char* what, const _ABPerson& person) {
  if (context.json) {
    printJson(personJson(person));
  } else {
    context.tell(what + nameAndId(person));
  }
}

// All of them, or none when the store refuses one.
void applyAll(const std::vector<Assignment>& assignments, _ABPerson& person) {
  const failures::Watch watch;
  applyAssignments(assignments, person);
  if (!watch.isClear()) giveUp(watch);
}

// Without a record where the first word is no book but something to set already, and a book is
// configured.
Arguments withBook(const Context& context, const Arguments& given) {
  auto arguments = given;
  const bool isBook = arguments.record.find('=') == std::string::npos;
  if (isBook || context.configuredBook().empty()) return arguments;
  arguments.assignments.insert(arguments.assignments.begin(), std::move(arguments.record));
  arguments.record.clear();
  return arguments;
}

void addPerson(const Context& context, const Arguments& given) {
  const auto arguments = withBook(context, given);
  const auto assignments = parseAssignments(arguments.assignments);
  const auto books = discoveredBooks(context);
  const auto book = arguments.record.empty() ? findConfiguredBook(context, books)
                                             : findBook(books, arguments.record);
  const WholeAct act;
  const failures::Watch watch;
  const auto person = recordOf(book->newPerson());
  if (!person) throw storeFailure("no person was added", watch);
  applyAll(assignments, *person);
  if (person->allValues().empty()) {
    ABAddressBook::sharedAddressBook()->revert();
    throw CommandError(kUsage, "a person has a value at least; write name=\"Ann Lee\", say");
  }
  if (saveEdits()) tellPerson(context, "added ", *person);
}

void setValues(const Context& context, const Arguments& arguments) {
  const auto assignments = parseAssignments(arguments.assignments);
  const auto person = findPerson(context, arguments.record);
  // Makes every property known that books add to those of the store.
  discoveredBooks(context);
  const WholeAct act;
  applyAll(assignments, *person);
  if (saveEdits()) tellPerson(context, "changed ", *person);
}

// Who has a terminal is asked, since part of a name may be that of somebody else.
void requireConsent(const Context& context, const Persons& persons) {
  if (context.json || !Context::canAsk()) return;
  std::cerr << "Remove " << terminalText(namesOf(persons)) << "? [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer != "y" && answer != "Y" && answer != "yes") {
    throw CommandError(kFailed, "nobody was removed");
  }
}

void removePersons(const Context& context, const std::vector<std::string>& names) {
  const auto persons = findPersons(context, names);
  requireConsent(context, persons);
  discoveredBooks(context);
  Json removed = Json::array();
  const auto told = "removed " + namesOf(persons);
  for (const auto& person : persons) {
    if (context.json) removed.push_back(personJson(*person));
  }
  const failures::Watch watch;
  for (const auto& person : persons) {
    ABAddressBook::sharedAddressBook()->removeRecord(person);
  }
  giveUpHalfEdits(watch);
  saveEdits();
  if (context.json) {
    printJson(removed);
  } else {
    context.tell(told);
  }
}

constexpr const char* kGrammar =
    "PROPERTY=VALUE sets a property, PROPERTY= clears it:\n"
    "  phone=\"+1 555\"         one main number instead of all\n"
    "  phone+=\"+1 556\"        one more; phone+:Boat=... one more with a label\n"
    "  phone:work=\"+1 557\"    the numbers with that label; phone:work= removes them\n"
    "  name=\"Ann Lee\"         first and last; name.first= .middle= .last= each alone\n"
    "  address.city=Oslo      street, city, state, zip, country; address.city:home=... by label\n"
    "  birthday=1990-05-17    --05-17 without a year\n"
    "  instantmessage=Skype:ann, socialprofile=SERVICE:NAME\n";

CLI::App* declareEdit(CLI::App& program, const char* name, const char* what, const char* record,
                      const char* recordHelp, const std::shared_ptr<Arguments>& arguments) {
  auto* edit = program.add_subcommand(name, what);
  edit->add_option(record, arguments->record, recordHelp)->required();
  edit->add_option("PROPERTY=VALUE", arguments->assignments, "What to set");
  edit->footer(kGrammar + ("Properties: " + propertyNames()));
  return edit;
}

}  // namespace

void declareEditPersons(CLI::App& program, const Context& context) {
  const auto added = std::make_shared<Arguments>();
  auto* add = declareEdit(program, "add-person", "Add a person to a book", "BOOK",
                          "Where; may be left out where one is configured", added);
  add->callback([&context, added] { addPerson(context, *added); });

  const auto changed = std::make_shared<Arguments>();
  auto* set = declareEdit(program, "set", "Change values of a person", "PERSON", "Who", changed);
  set->get_option("PROPERTY=VALUE")->required();
  set->callback([&context, changed] { setValues(context, *changed); });

  auto* remove = program.add_subcommand("remove-person", "Remove persons, with their tags");
  remove->alias("rm");
  const auto names = std::make_shared<std::vector<std::string>>();
  remove->add_option("PERSON", *names, "Who")->required();
  remove->callback([&context, names] { removePersons(context, *names); });
}

}  // namespace ox::program
