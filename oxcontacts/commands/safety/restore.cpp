// restore: a book from a backup of one.
#include <memory>

#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/OxMacAddressBookSDK/admin/restored_tags.hpp"
#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "oxcontacts/book_file.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/guarded_copy.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/progress_bar.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string book;
  std::string file;
  bool force = false;
};

// The steps of a load, here and not on a thread of its own, for they are a part of this act.
void replaceRecords(const Context& context, OxMacAddressBook& book, const BookFile& file) {
  const auto bar = std::make_shared<ProgressBar>(context, "restoring");
  book.setLoadProgressBlock([bar](double percent, bool) { bar->show(percent); });
  book.clearAddressBook();
  book.addGroupAndPersonByGeneralAddressBook(file.book);
  book.adjustGroupAndPersonRelatedByGeneralAddressBook(file.book);
  book.setLoadProgressBlock(nullptr);
}

// Whether another program keeps the store from being written is seen before the work, by writing
// nothing.
void refuseLockedStore() {
  const failures::Watch watch;
  std::string reason;
  if (!CNContactStore::init()->executeSaveRequest_error(*CNSaveRequest::init(), &reason)) {
    throw storeFailure("nothing was restored", watch);
  }
}

std::vector<RecordKey> personsIn(const OxMacAddressBook& book) {
  return recordsOfAccount(book.validContainerID().value_or(""), RecordKind::Person);
}

RecordCounts countsOf(const OxMacAddressBook& book) {
  const auto container = book.validContainerID().value_or("");
  return {recordsOfAccount(container, RecordKind::Group).size(), personsIn(book).size()};
}

// Throws unless the book holds what it should.
void verify(const Context& context, const OxMacAddressBook& book, const RecordCounts& expected,
            const std::string& copy) {
  const auto found = countsOf(book);
  if (found.groups != expected.groups || found.persons != expected.persons) {
    throw CommandError(kFailed, "the book holds " + counted(found.groups, "group") + " and " +
                                    counted(found.persons, "person") + " instead of " +
                                    std::to_string(expected.groups) + " and " +
                                    std::to_string(expected.persons) +
                                    "; the store as it was is in " + copy);
  }
  if (context.json) {
    printJson({{"groups", found.groups}, {"persons", found.persons}});
    return;
  }
  context.tell("restored " + book.name().value_or("") + ": " + counted(found.groups, "group") +
               ", " + counted(found.persons, "person"));
}

void restore(const Context& context, const Arguments& arguments) {
  const auto file = readBookFile(arguments.file);
  if (!arguments.force && file.counts.groups == 0 && file.counts.persons == 0) {
    throw CommandError(kFailed,
                       arguments.file + ": holds nothing; --force empties the book with it");
  }
  const auto book = findBook(discoveredBooks(context), arguments.book);
  const auto before = personsIn(*book);
  auto expected = file.counts;
  // A load removes no groups of a book that shows none.
  if (!book->canCreateGroup()) expected.groups += countsOf(*book).groups;
  refuseLockedStore();
  const auto copy = keepCopyBefore(context, "restore");
  const WholeAct act;
  {
    // A tag file that fails costs the tags, and is told at the end.
    const failures::Watch watch(failures::Watch::Over::OwnWork);
    replaceRecords(context, *book, file);
    settleRestoredTags(*book, before, file.tags);
    if (watch.hasFailures()) giveUp(watch);
  }
  saveEdits();
  verify(context, *book, expected, copy);
}

}  // namespace

void declareRestore(CLI::App& program, const Context& context) {
  auto* command = program.add_subcommand("restore", "Replace a book by what a backup of one holds");
  const auto arguments = std::make_shared<Arguments>();
  command->add_option("BOOK", arguments->book, "Which; everything in it is replaced")->required();
  command->add_option("FILE", arguments->file, "What `backup BOOK FILE` wrote")->required();
  command->add_flag("--force", arguments->force, "Empty the book when the file holds nothing");
  command->footer(
      "A copy of the store is kept first (see `copies`). An unreadable file changes "
      "nothing.");
  command->callback([&context, arguments] { restore(context, *arguments); });
}

}  // namespace ox::program
