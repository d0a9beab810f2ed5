// phones, addresses, mail: one kind of value of many persons, a line each.
#include <algorithm>
#include <iostream>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "oxcontacts/choice.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/name_and_id.hpp"
#include "oxcontacts/output/order.hpp"
#include "oxcontacts/output/shown_value.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/output/terminal_text.hpp"
#include "oxcontacts/output/value_json.hpp"

namespace ox::program {
namespace {

struct Arguments {
  Choice choice;
  bool bare = false;
};

struct Entry {
  std::shared_ptr<_ABPerson> person;
  std::string label;
  Object value;
};

// The persons by name, of each the values in the order of the record.
std::vector<Entry> entriesOf(const Context& context, const Choice& choice,
                             std::string_view propertyName) {
  const auto property = OxProperty::propertyWithName(propertyName);
  std::vector<Entry> entries;
  for (const auto& person : inOrder(chosenPersons(context, choice), "name", false).persons) {
    const auto values = multipleOf(shownValue(*person, property));
    for (std::uint64_t i = 0; values && i < values->count(); ++i) {
      const auto element = values->valueAtIndex(i);
      const auto& label = element->label();
      entries.push_back(
          {person, label ? labelWords(label->displayName().value_or("")) : "", element->value()});
    }
  }
  return entries;
}

Json entryJson(const Entry& entry) {
  return {{"ID", jsonOf(entry.person->ID())},
          {"displayName", jsonOf(entry.person->displayName())},
          {"labelDisplayName", entry.label},
          {"value", jsonOf(entry.value)}};
}

[[noreturn]] void throwNothing(const char* what, const Choice& choice) {
  throw CommandError(kNotFound, std::string("nobody ") +
                                    (choice.find ? "who matches \"" + *choice.find + "\" " : "") +
                                    "has " + what);
}

void listEntries(const Context& context, Arguments& arguments, std::string_view property,
                 const char* heading, const char* what) {
  prepare(context, arguments.choice);
  const OneMoment moment;
  const auto entries = entriesOf(context, arguments.choice, property);
  if (entries.empty() && arguments.choice.find) throwNothing(what, arguments.choice);
  if (context.json) {
    JsonList list;
    for (const auto& entry : entries) list.add(entryJson(entry));
    return list.close();
  }
  constexpr auto kLeft = Table::Align::Left;
  Table table(
      {{"NAME", kLeft, Table::Room::MayCut}, {"LABEL", kLeft, Table::Room::MayCut}, {heading}});
  for (const auto& entry : entries) {
    table.addRow({nameOrId(*entry.person), entry.label, readableText(entry.value)});
  }
  table.print(context);
}

// As a field of a line whose fields tabulators part.
std::string field(std::string text) {
  std::ranges::replace(text, '\t', ' ');
  return terminalText(text);
}

// What mail programs ask for while somebody types an address: a line for each address, address,
// name and label parted by tabulators, below a line for the user.
void listMail(const Context& context, Arguments& arguments) {
  prepare(context, arguments.choice);
  const OneMoment moment;
  const auto entries = entriesOf(context, arguments.choice, OxProPertyEmail);
  if (entries.empty()) throwNothing("an e-mail address", arguments.choice);
  if (context.json) {
    JsonList list;
    for (const auto& entry : entries) list.add(entryJson(entry));
    return list.close();
  }
  if (!arguments.bare) {
    std::cout << entries.size() << (entries.size() == 1 ? " address" : " addresses") << '\n';
  }
  for (const auto& entry : entries) {
    std::cout << field(readableText(entry.value)) << '\t'
              << field(entry.person->displayName().value_or("")) << '\t' << field(entry.label)
              << '\n';
  }
}

std::shared_ptr<Arguments> declareEntries(CLI::App& command) {
  const auto arguments = std::make_shared<Arguments>();
  declareWords(command, arguments->choice);
  declareChoice(command, arguments->choice);
  return arguments;
}

}  // namespace

void declareValues(CLI::App& program, const Context& context) {
  auto* phones = program.add_subcommand("phones", "List telephone numbers");
  phones->callback([&context, arguments = declareEntries(*phones)] {
    listEntries(context, *arguments, OxProPertyPhone, "NUMBER", "a telephone number");
  });
  auto* addresses = program.add_subcommand("addresses", "List postal addresses");
  addresses->callback([&context, arguments = declareEntries(*addresses)] {
    listEntries(context, *arguments, OxProPertyAddress, "ADDRESS", "an address");
  });
  auto* mail = program.add_subcommand(
      "mail", "List e-mail addresses as mail programs take them: address, name, label");
  const auto arguments = declareEntries(*mail);
  mail->add_flag("--bare", arguments->bare, "Without the first line, which tells how many (aerc)");
  mail->footer(
      "mutt: set query_command = \"oxcontacts mail '%s'\"\n"
      "aerc: address-book-cmd = oxcontacts mail --bare \"%s\"");
  mail->callback([&context, arguments] { listMail(context, *arguments); });
}

}  // namespace ox::program
