#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/base/failures.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/person_json.hpp"
#include "oxcontacts/output/progress_bar.hpp"

namespace ox::program {
namespace {

// A book that held no record is not among those that persons are looked up in; its tags are.
void copyTags(const _ABPerson& source, const _ABPerson& copy, const OxMacAddressBook& book) {
  if (copy.personAddressBook() || !book.tagManager()) return;
  book.tagManager()->setTags_forPersonID(source.tagArray(), copy.ID());
}

Persons copied(const Context& context, const Persons& sources, OxMacAddressBook& book) {
  ProgressBar bar(context, "copying");
  Persons copies;
  std::size_t done = 0;
  for (const auto& source : sources) {
    const failures::Watch watch;
    if (auto copy = recordOf(book.addOneFromOtherPerson(source))) {
      copies.push_back(std::move(copy));
      copyTags(*source, *copies.back(), book);
    }
    // What could not be read would be missing in the copy.
    if (copies.size() == done || watch.hasFailures()) giveUp(watch);
    ++done;
    bar.show(100.0 * static_cast<double>(done) / static_cast<double>(sources.size()));
  }
  return copies;
}

void copyPersons(const Context& context, const std::vector<std::string>& names,
                 const std::string& bookName) {
  const auto sources = findPersons(context, names);
  const auto book = findBook(discoveredBooks(context), bookName);
  const WholeAct act;
  const auto copies = copied(context, sources, *book);
  if (!saveEdits()) return;
  if (context.json) {
    JsonList list;
    for (const auto& copy : copies) list.add(personJson(*copy));
    list.close();
    return;
  }
  for (const auto& copy : copies) {
    context.tell("copied " + copy->displayName().value_or("") + " to " + book->name().value_or("") +
                 " (" + copy->key().shortText() + ")");
  }
}

}  // namespace

void declareCopy(CLI::App& program, const Context& context) {
  auto* copy = program.add_subcommand("copy", "Copy persons into another book");
  const auto names = std::make_shared<std::vector<std::string>>();
  const auto book = std::make_shared<std::string>();
  copy->add_option("PERSON", *names, "Who")->required();
  copy->add_option("--to", *book, "Where")->type_name("BOOK")->required();
  copy->callback([&context, names, book] { copyPersons(context, *names, *book); });
}

}  // namespace ox::program
