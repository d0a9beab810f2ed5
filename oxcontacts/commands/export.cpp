#include <cstdio>
#include <optional>

#include "base/replacement_file.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/files.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/progress_bar.hpp"
#include "platform/vcard/exporter.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::vector<std::string> persons;
  std::string book;
  std::string file;  // empty: standard output
  std::string format = "vcard3";
};

struct Records {
  Persons persons;
  RecordKeys groups;
};

// Where the cards go. A file is put in its place once all of them are in it.
class Output {
 public:
  explicit Output(const std::string& path) {
    if (path.empty()) return;
    refuseStoreFile(path);
    file_.emplace(path);
  }

  void write(std::string_view bytes) {
    if (file_) {
      file_->write(bytes);
    } else if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) {
      throw CommandError(kFailed, "the standard output could not be written");
    }
  }

  void finish() {
    if (file_) {
      file_->commit();
    } else if (std::fflush(stdout) != 0) {
      throw CommandError(kFailed, "the standard output could not be written");
    }
  }

 private:
  std::optional<ReplacementFile> file_;
};

// Named persons alone; else those of the book, or all, with their groups.
Records recordsFor(const Context& context, const Arguments& arguments) {
  if (!arguments.persons.empty()) return {findPersons(arguments.persons), {}};
  std::optional<Text> book;
  if (!arguments.book.empty()) book = findBook(discoveredBooks(context), arguments.book)->ID();
  const auto store = ABAddressBook::sharedAddressBook();
  Records records;
  for (const auto& record : store->people()) {
    auto person = hostPerson(record);
    if (!book || person->addressBookID() == *book) records.persons.push_back(std::move(person));
  }
  for (const auto& record : store->groups()) {
    if (!book || hostGroup(record)->addressBookID() == *book)
      records.groups.push_back(record->key());
  }
  return records;
}

void writeHostCards(const Records& records, Output& output, ProgressBar& bar) {
  std::size_t done = 0;
  for (const auto& person : records.persons) {
    const auto card = person->newCreateVcard();
    if (!card) throw storeFailure(person->ID().value_or("") + " could not be read");
    if (done > 0) output.write("\r\n");
    output.write(*card);
    bar.show(100.0 * static_cast<double>(++done) / static_cast<double>(records.persons.size()));
  }
}

void writeCards(const Records& records, vcard::CardVersion version, Output& output,
                ProgressBar& bar) {
  RecordKeys persons;
  persons.reserve(records.persons.size());
  for (const auto& person : records.persons) persons.push_back(person->key());
  const auto total = static_cast<double>(persons.size() + records.groups.size());
  std::size_t done = 0;
  vcard::exportCards(persons, records.groups, version, [&](std::string_view card) {
    output.write(card);
    bar.show(100.0 * static_cast<double>(++done) / total);
    return true;
  });
}

void exportRecords(const Context& context, const Arguments& arguments) {
  const auto records = recordsFor(context, arguments);
  Output output(arguments.file);
  ProgressBar bar(context, "exporting");
  const bool hostForm = arguments.format == "host-vcard";
  if (hostForm) {
    writeHostCards(records, output, bar);
  } else {
    writeCards(records,
               arguments.format == "vcard4" ? vcard::CardVersion::V40 : vcard::CardVersion::V30,
               output, bar);
  }
  output.finish();
  if (arguments.file.empty()) return;
  const auto groups = hostForm ? std::size_t{0} : records.groups.size();
  context.tell("exported " + counted(records.persons.size(), "person") + " and " +
               counted(groups, "group") + " to " + arguments.file);
}

}  // namespace

void declareExport(CLI::App& program, const Context& context) {
  auto* command = program.add_subcommand("export", "Write persons and groups as vCards");
  const auto arguments = std::make_shared<Arguments>();
  auto* persons = command->add_option("PERSON", arguments->persons, "Whom; all when none is named");
  command->add_option("--book", arguments->book, "Everything in this book")
      ->type_name("BOOK")
      ->excludes(persons);
  command->add_option("-o,--output", arguments->file, "Write to this file, whole or not at all")
      ->type_name("FILE");
  command
      ->add_option("--format", arguments->format,
                   "host-vcard: the framework's own cards with their pictures, without groups")
      ->check(CLI::IsMember({"vcard3", "vcard4", "host-vcard"}))
      ->capture_default_str();
  command->callback([&context, arguments] { exportRecords(context, *arguments); });
}

}  // namespace ox::program
