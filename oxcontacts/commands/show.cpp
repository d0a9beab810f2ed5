// show: every value of one person.
#include <iostream>

#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/person_json.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/output/terminal_text.hpp"
#include "oxcontacts/output/value_json.hpp"

namespace ox::program {
namespace {

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
    auto word = label ? label->displayName().value_or("") : std::string();
    if (element == multiple->mainValue()) word += " *";
    table.addRow({i == 0 ? property.displayName() : "", word, readableText(element->value())});
  }
}

void printPerson(const Context& context, const _ABPerson& person) {
  Table table({{"PROPERTY"}, {"LABEL"}, {"VALUE"}});
  for (const auto& property : person.notNullValueProperty()) {
    const auto value = person.valueByProperty(property);
    if (value) addRows(*property, *value, table);
  }
  for (const auto& group : person.groups()) {
    table.addRow({"Group", "", group->displayName().value_or("")});
  }
  std::cout << terminalText(person.displayName().value_or("")) << " (" << person.ID().value_or("")
            << ", book " << person.addressBookID().value_or("") << ")\n";
  table.print(context);
}

void showPerson(const Context& context, const std::string& text) {
  const auto person = findPerson(text);
  if (context.json) {
    printJson(personJson(*person));
  } else {
    printPerson(context, *person);
  }
}

}  // namespace

void declareShow(CLI::App& program, const Context& context) {
  auto* show = program.add_subcommand("show", "Show every value of a person");
  const auto person = std::make_shared<std::string>();
  show->add_option("PERSON", *person, "Who")->required();
  show->callback([&context, person] { showPerson(context, *person); });
}

}  // namespace ox::program
