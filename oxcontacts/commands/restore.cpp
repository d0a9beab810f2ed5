// restore: a book from a backup of one.
#include <condition_variable>
#include <mutex>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/OxMacAddressBookSDK/admin/restored_tags.hpp"
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

// Loads on the book's own thread and waits for its finished report.
void load(const Context& context, OxMacAddressBook& book, const Data& data) {
  struct State {
    std::mutex mutex;
    std::condition_variable finished;
    bool done = false;
  };
  const auto state = std::make_shared<State>();
  ProgressBar bar(context, "restoring");
  book.loadWithData_progressBlock(data, [state, &bar](double percent, bool finished) {
    if (!finished) return bar.show(percent);
    const std::lock_guard lock(state->mutex);
    state->done = true;
    state->finished.notify_one();
  });
  std::unique_lock lock(state->mutex);
  state->finished.wait(lock, [&] { return state->done; });
}

// A load deletes first and cannot say that another program keeps it from writing: whether one does
// is seen before, by writing nothing.
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
            const std::string& copy, const failures::Watch& watch) {
  const auto keeps = "; the store as it was is in " + copy;
  if (watch.hasFailures()) {
    const auto failure = storeFailure("restoring failed", watch);
    throw CommandError(failure.code(),
                       std::string(failure.what()) + "; the book may be incomplete" + keeps);
  }
  const auto found = countsOf(book);
  if (found.groups != expected.groups || found.persons != expected.persons) {
    throw CommandError(kFailed, "the book holds " + counted(found.groups, "group") + " and " +
                                    counted(found.persons, "person") + " instead of " +
                                    std::to_string(expected.groups) + " and " +
                                    std::to_string(expected.persons) + keeps);
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
  const failures::Watch watch;
  load(context, *book, file.data);
  if (!watch.hasFailures()) {
    settleRestoredTags(*book, before, file.tags);
    OxTagManager::makeDurable();
  }
  verify(context, *book, expected, copy, watch);
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
