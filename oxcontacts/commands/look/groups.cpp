// groups: the tree of groups.
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/group_tree.hpp"

namespace ox::program {
namespace {

// Those of the named book, else of the configured one, else of all.
Groups rootGroups(const Context& context, const std::string& named) {
  const auto books = discoveredBooks(context);
  Groups roots;
  const auto addThoseOf = [&roots](const OxMacAddressBook& book) {
    for (const auto& group : book.rootGroups()) roots.push_back(recordOf(group));
  };
  if (named.empty() && !context.configuredBook().empty()) {
    addThoseOf(*findConfiguredBook(context, books));
  } else if (named.empty() || named == kAllBooks) {
    for (const auto& book : books) addThoseOf(*book);
  } else {
    addThoseOf(*findBook(books, named));
  }
  return roots;
}

}  // namespace

void declareGroups(CLI::App& program, const Context& context) {
  auto* groups = program.add_subcommand("groups", "Show the groups as a tree");
  const auto book = std::make_shared<std::string>();
  groups
      ->add_option("--book", *book, "Only those of this book; * for all (else the configured one)")
      ->type_name("BOOK");
  groups->callback([&context, book] {
    const OneMoment moment;
    const auto roots = rootGroups(context, *book);
    if (context.json) {
      printJsonTree(roots);
    } else {
      printTree(roots);
    }
  });
}

}  // namespace ox::program
