// books: the address books that discovery finds.
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {
namespace {

Json bookJson(OxMacAddressBook& book) {
  return {{"ID", jsonOf(book.ID())},
          {"name", jsonOf(book.name())},
          {"serverType", book.serverType()},
          {"canCreateGroup", book.canCreateGroup()},
          {"canCreateSubGroup", book.canCreateSubGroup()},
          {"canOprate", book.canOprate()},
          {"persons", book.allPersonsCount()},
          {"groups", book.allGroups().size()}};
}

void listBooks(const Context& context) {
  const OneMoment moment;
  const auto books = discoveredBooks(context);
  if (context.json) {
    JsonList list;
    for (const auto& book : books) list.add(bookJson(*book));
    list.close();
    return;
  }
  using Align = Table::Align;
  Table table({{"NAME", Align::Left, Table::Room::MayCut},
               {"ID", Align::Left, Table::Room::MayLack},
               {"PERSONS", Align::Right},
               {"GROUPS", Align::Right},
               {"MAY BE CHANGED"}});
  for (const auto& book : books) {
    table.addRow({book->name().value_or(""), book->ID().value_or(""),
                  std::to_string(book->allPersonsCount()), std::to_string(book->allGroups().size()),
                  book->canOprate() ? "yes" : "no"});
  }
  table.print(context);
}

}  // namespace

void declareBooks(CLI::App& program, const Context& context) {
  auto* books = program.add_subcommand("books", "List the address books");
  books->callback([&context] { listBooks(context); });
}

}  // namespace ox::program
