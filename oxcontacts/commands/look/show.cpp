// show: every value of one person.
#include <iostream>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/journal/journal.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/past_values.hpp"
#include "oxcontacts/output/person_json.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/output/terminal_text.hpp"
#include "oxcontacts/output/value_json.hpp"
#include "oxcontacts/past_persons.hpp"
#include "oxcontacts/time_text.hpp"
#include "oxcontacts/wanted_name.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string person;
  std::string at;
};

// A row for a single value, one for each element of a multiple one; the main one bears a star.
void addRows(const OxProperty& property, const OxValue& value, Table& table) {
  if (const auto* single = dynamic_cast<const OxMutableSingleValue*>(&value)) {
    auto text = readableText(single->value());
    // A person without a name has one all the same, of no parts.
    if (text.empty() && property.name() == OxProPertyName) return;
    table.addRow({property.displayName(), "", std::move(text)});
    return;
  }
  const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(&value);
  for (std::uint64_t i = 0; multiple != nullptr && i < multiple->count(); ++i) {
    const auto element = multiple->valueAtIndex(i);
    const auto& label = element->label();
    auto word = label ? labelWords(label->displayName().value_or("")) : std::string();
    if (element == multiple->mainValue()) word += " *";
    table.addRow({i == 0 ? property.displayName() : "", word, readableText(element->value())});
  }
}

void printPerson(const Context& context, const _ABPerson& person) {
  Table table({{"PROPERTY"}, {"LABEL"}, {"VALUE"}});
  for (const auto& property : person.notNullValueProperty()) {
    const auto value = shownValue(person, property);
    if (value) addRows(*property, *value, table);
  }
  for (const auto& group : person.groups()) {
    table.addRow({"Group", "", group->displayName().value_or("")});
  }
  std::cout << terminalText(person.displayName().value_or("")) << " ("
            << terminalText(person.key().shortText()) << ", book "
            << terminalText(BookNames().nameOf(person.addressBookID())) << ")\n";
  table.print(context);
}

// The person as the journal tells it; throws when it does not reach back so far.
PastRecord recordAt(const Context& context, const std::string& person, const std::string& time) {
  const auto key = findPersonOfAnyTime(context, person);
  const auto answer = journal::recordAt(key, endOfTime(time));
  switch (answer.was) {
    case PastRecordAnswer::Was::There:
      return answer.record;
    case PastRecordAnswer::Was::NotThere:
      throw CommandError(kNotFound, nameOfAnyTime(key) + " was not there at " + time);
    case PastRecordAnswer::Was::Unknown:
      break;
  }
  throw CommandError(kNotFound, "the journal does not reach back to " + time);
}

std::vector<std::string> tagsOf(const PastRecord& record) {
  if (record.tags) return *record.tags;
  const auto person = hostPerson(ABAddressBook::sharedAddressBook()->recordForKey(record.key));
  return person ? person->tagArray() : std::vector<std::string>();
}

void showPast(const Context& context, const Arguments& arguments) {
  const auto record = recordAt(context, arguments.person, arguments.at);
  const auto tags = tagsOf(record);
  if (context.json) {
    Json groups = Json::array();
    for (const auto& group : record.groups) {
      groups.push_back({{"ID", group.text()}, {"displayName", nameOfAnyTime(group)}});
    }
    printJson({{"ID", record.key.text()},
               {"displayName", nameIn(record.properties)},
               {"groups", std::move(groups)},
               {"tags", tags},
               {"picture", record.hasPicture},
               {"properties", jsonOfStored(record.properties)}});
    return;
  }
  Table table({{"PROPERTY"}, {"LABEL"}, {"VALUE"}});
  addStoredRows(record.properties, table);
  for (const auto& tag : tags) table.addRow({"Tag", "", tag});
  for (const auto& group : record.groups) table.addRow({"Group", "", nameOfAnyTime(group)});
  std::cout << terminalText(nameIn(record.properties)) << " (" << terminalText(record.key.text())
            << ", at " << terminalText(arguments.at) << ")\n";
  table.print(context);
}

void showPerson(const Context& context, const std::string& text) {
  const auto person = findPerson(context, text);
  const OneMoment moment;
  // Another program may have removed her since she was found, and her name is remembered.
  if (!ABAddressBook::sharedAddressBook()->recordForKey(person->key())) {
    throwNotFound("person", text);
  }
  if (context.json) {
    printJson(personJson(*person));
  } else {
    printPerson(context, *person);
  }
}

}  // namespace

void declareShow(CLI::App& program, const Context& context) {
  auto* show = program.add_subcommand("show", "Show every value of a person");
  const auto arguments = std::make_shared<Arguments>();
  show->add_option("PERSON", arguments->person, "Who")->required();
  show->add_option("--at", arguments->at,
                   "As it was at the end of that day, minute or second: 2026-12-31, \"2026-12-31 "
                   "23:59\", 2026-12-31T23:59:59Z; somebody who is gone now, too")
      ->type_name("TIME");
  show->callback([&context, arguments] {
    if (arguments->at.empty()) return showPerson(context, arguments->person);
    const OneMoment moment;
    showPast(context, *arguments);
  });
}

}  // namespace ox::program
