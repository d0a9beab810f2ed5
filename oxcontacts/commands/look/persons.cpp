// persons, find: the list, by book, group, tag or words.
#include <algorithm>
#include <charconv>
#include <optional>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "oxcontacts/choice.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/order.hpp"
#include "oxcontacts/output/person_columns.hpp"
#include "oxcontacts/output/terminal_width.hpp"

namespace ox::program {
namespace {

struct Arguments {
  Choice choice;
  std::string sort;     // empty: the configured order, else the usual one
  std::string columns;  // empty: so it is with them
  std::optional<std::size_t> limit;
};

Json personJson(const _ABPerson& person) {
  return {{"ID", jsonOf(person.ID())},
          {"addressBookID", jsonOf(person.addressBookID())},
          {"displayName", jsonOf(person.displayName())},
          {"nameChineesPinyin", jsonOf(person.nameChineesPinyin())},
          {"mainPhone", jsonOf(mainPhone(person))},
          {"mainEmail", jsonOf(mainEmail(person))},
          {"tags", person.tagArray()}};
}

std::size_t limitOf(const std::string& text) {
  std::size_t limit = 0;
  const auto* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, limit);
  if (read.ec != std::errc() || read.ptr != end) {
    throw CommandError(kUsage, "--limit: \"" + text + "\" is no number of persons");
  }
  return limit;
}

// Letters help in a list that is longer than what a reader sees at once.
constexpr std::size_t kLongList = 40;

OrderedPersons orderedPersons(const Context& context, const Arguments& arguments) {
  auto chosen = chosenPersons(context, arguments.choice);
  const auto shown = std::min<std::size_t>(chosen.size(), arguments.limit.value_or(chosen.size()));
  const bool withLetters = !context.json && shown > kLongList && outputColumns();
  auto sort = arguments.sort.empty() ? context.config.textOf("sort") : arguments.sort;
  if (sort.empty()) sort = kUsualOrder;
  auto ordered = inOrder(std::move(chosen), sort, withLetters);
  if (arguments.limit && *arguments.limit < ordered.persons.size()) {
    ordered.persons.resize(*arguments.limit);
  }
  return ordered;
}

void printJsonList(const Context& context, const Arguments& arguments) {
  const OneMoment moment;
  const auto ordered = orderedPersons(context, arguments);
  JsonList list;
  for (const auto& person : ordered.persons) list.add(personJson(*person));
  list.close();
}

std::vector<PersonColumn> columnsOf(const Context& context, const Arguments& arguments,
                                    const BookNames& books) {
  if (!arguments.columns.empty()) return personColumns(arguments.columns, books);
  const auto configured = context.config.textOf("columns");
  if (configured.empty()) return personColumns(kUsualColumns, books);
  try {
    return personColumns(configured, books);
  } catch (const CommandError& error) {
    throw CommandError(error.code(), context.config.placeOf("columns") + ": " + error.what());
  }
}

Table tableOfPersons(const Context& context, const Arguments& arguments) {
  const OneMoment moment;
  const BookNames books;
  const auto columns = columnsOf(context, arguments, books);
  std::vector<Table::Column> heads;
  heads.reserve(columns.size());
  for (const auto& column : columns) heads.push_back(column.head);
  Table table(std::move(heads));
  const auto [persons, letters] = orderedPersons(context, arguments);
  std::string letter;
  for (std::size_t i = 0; i < persons.size(); ++i) {
    if (letters[i] != letter) table.addHeading(letter = letters[i]);
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (const auto& column : columns) cells.push_back(column.cell(*persons[i]));
    table.addRow(std::move(cells));
  }
  return table;
}

void listPersons(const Context& context, Arguments& arguments) {
  prepare(context, arguments.choice);
  if (context.json) return printJsonList(context, arguments);
  tableOfPersons(context, arguments).print(context);
}

void declareList(CLI::App& persons, const Context& context,
                 const std::shared_ptr<Arguments>& arguments) {
  declareChoice(persons, arguments->choice);
  persons
      .add_option("--sort", arguments->sort,
                  std::string(kOrders) + " (else the configured order, else name)")
      ->check(CLI::IsMember({"name", "family", "pinyin", "store"}))
      ->type_name("ORDER");
  persons.add_option("--columns", arguments->columns, "What the table shows: " + columnNames())
      ->type_name("NAMES");
  persons
      .add_option_function<std::string>(
          "--limit", [arguments](const std::string& text) { arguments->limit = limitOf(text); },
          "At most so many")
      ->type_name("N");
  persons.callback([&context, arguments] { listPersons(context, *arguments); });
}

}  // namespace

void declarePersons(CLI::App& program, const Context& context) {
  auto* persons = program.add_subcommand("persons", "List persons");
  persons->alias("ls");
  declareList(*persons, context, std::make_shared<Arguments>());

  auto* find = program.add_subcommand("find", "Find persons by words: persons --find WORDS");
  const auto arguments = std::make_shared<Arguments>();
  declareList(*find, context, arguments);
  declareWords(*find, arguments->choice);
  find->get_option("WORDS")->required();
}

}  // namespace ox::program
