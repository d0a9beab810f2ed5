// backup: one book as the data of a neutral book, or a copy of the whole store.
#include <system_error>

#include "ox/OxMacAddressBookSDK/_ABPerson/stored_picture.hpp"
#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/OxMacAddressBookSDK/admin/written_book.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/base/failures.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/files.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/guarded_copy.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/progress_bar.hpp"
#include "oxcontacts/output_file.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::vector<std::string> words;  // BOOK FILE, with --all FILE
  bool all = false;
};

class FileOfBook final : public BookSink {
 public:
  explicit FileOfBook(const std::string& path) : file_(path) {}
  void append(std::string_view bytes) override { file_.write(bytes); }
  void replaceStart(std::string_view bytes) override { file_.replaceStart(bytes); }
  void commit() { file_.commit(); }

 private:
  OutputFile file_;
};

bool isWritten(const Context& context, OxMacAddressBook& book, BookSink& sink) {
  ProgressBar bar(context, "saving the book");
  try {
    return writeBook(book, sink, [&](double percent) { bar.show(percent); });
  } catch (const std::exception& error) {
    failures::notice(error);
    return false;
  }
}

// What could not be read would be missing in the file, and an earlier backup may hold it.
void writeWhole(const Context& context, OxMacAddressBook& book, const std::string& path,
                const failures::Watch& watch) {
  try {
    FileOfBook file(path);
    if (!isWritten(context, book, file) || watch.hasFailures()) {
      throw storeFailure("the book was not saved, " + path + " is as it was", watch);
    }
    file.commit();
  } catch (const std::system_error& error) {
    throw CommandError(kFailed, error.what());
  }
}

void tellCounts(const Context& context, const RecordCounts& counts, const std::string& what,
                const std::string& path) {
  if (context.json) {
    printJson({{"groups", counts.groups}, {"persons", counts.persons}});
  } else {
    context.tell("saved " + what + " to " + path + ": " + counted(counts.groups, "group") + ", " +
                 counted(counts.persons, "person"));
  }
}

// Names the persons whose pictures the file cannot hold; true when there are any.
bool complainOfPictures(OxMacAddressBook& book, const std::string& path) {
  bool any = false;
  const auto persons = book.allPersons();
  if (!persons) return false;
  for (const auto& person : persons->snapshot()) {
    const auto record = recordOf(person);
    if (!record || !hasUnreadablePicture(*record)) continue;
    any = true;
    Context::complain(person->displayName().value_or("") + " (" + person->ID().value_or("") +
                      "): the picture cannot be decoded and is not in " + path +
                      "; `backup --all` keeps it");
  }
  return any;
}

// Tells of groups that no book of such an account shows; true when there are any.
bool complainOfHiddenGroups(const OxMacAddressBook& book, const std::string& path) {
  if (book.canCreateGroup()) return false;
  const auto container = book.validContainerID().value_or("");
  const auto count = recordsOfAccount(container, RecordKind::Group).size();
  if (count == 0) return false;
  Context::complain(book.name().value_or("") + " shows no groups: " + counted(count, "group") +
                    (count == 1 ? " is" : " are") + " not in " + path + "; `backup --all` keeps " +
                    (count == 1 ? "it" : "them"));
  return true;
}

void backUpBook(const Context& context, const std::string& name, const std::string& path) {
  refuseStoreFile(path);
  const failures::Watch watch;
  const OneMoment moment;
  const auto book = findBook(discoveredBooks(context), name);
  writeWhole(context, *book, path, watch);
  tellCounts(context, {book->allGroups().size(), book->allPersonsCount()},
             book->name().value_or(""), path);
  const bool withoutPictures = complainOfPictures(*book, path);
  const bool withoutGroups = complainOfHiddenGroups(*book, path);
  if (withoutPictures || withoutGroups) throw CommandError(kDoneWithRefusals, "");
}

void backUpAll(const Context& context, const std::string& path) {
  GuardedCopy guarded(path);
  const auto counts = guarded.copy->take();
  guarded.copy->put();
  tellCounts(context, counts, "the whole store", path);
}

void backUp(const Context& context, const Arguments& arguments) {
  const auto& words = arguments.words;
  if (words.size() != (arguments.all ? 1U : 2U)) {
    throw CommandError(kUsage, "backup takes BOOK and FILE, or --all and FILE");
  }
  if (OutputFile::isStandardOutput(words.back()) || OutputFile::isStream(words.back())) {
    throw CommandError(kUsage, "a backup needs a file of its own");
  }
  if (arguments.all) {
    backUpAll(context, words.front());
  } else {
    backUpBook(context, words.front(), words.back());
  }
}

}  // namespace

void declareBackup(CLI::App& program, const Context& context) {
  auto* backup = program.add_subcommand("backup", "Save a book, or the whole store, to a file");
  const auto arguments = std::make_shared<Arguments>();
  backup->add_option("[BOOK] FILE", arguments->words, "What and where")->required();
  backup->add_flag("--all", arguments->all, "The whole store, and its tags as FILE.tags");
  backup->footer(
      "A book is brought back by `restore`. A copy of the whole store is a store: `--store FILE` "
      "works with it.\nNothing is written when a record cannot be read. A picture that cannot be "
      "decoded is left out of a book, its person named, and the exit code 3; so it is with the "
      "groups of an account whose books show none.");
  backup->callback([&context, arguments] { backUp(context, *arguments); });
}

}  // namespace ox::program
