// export: persons and groups as vCards.
#include <optional>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/transfer/exporter.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/progress_bar.hpp"
#include "oxcontacts/output_file.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::vector<std::string> persons;
  std::string book;
  std::string file = "-";
  std::string format = "vcard3";
};

struct Records {
  Persons persons;
  RecordKeys groups;
};

// The ID of the book that is named; missing when none is.
std::optional<Text> wantedBook(const Context& context, const Arguments& arguments) {
  if (arguments.book.empty()) return std::nullopt;
  return findBook(discoveredBooks(context), arguments.book)->ID();
}

// Named persons alone; else those of the book, or all, with their groups.
Records recordsFor(const Arguments& arguments, const std::optional<Text>& book) {
  if (!arguments.persons.empty()) return {findPersons(arguments.persons), {}};
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

vcard::ExportReport writeHostCards(const Records& records, OutputFile& output, ProgressBar& bar) {
  vcard::ExportReport report;
  const failures::Watch watch;
  for (const auto& person : records.persons) {
    const auto card = person->newCreateVcard();
    if (watch.hasFailures()) {
      throw storeFailure(person->ID().value_or("") + " could not be read", watch);
    }
    if (!card) {
      ++report.gone;
      continue;
    }
    if (report.persons > 0) output.write("\r\n");
    output.write(*card);
    bar.show(100.0 * static_cast<double>(++report.persons) /
             static_cast<double>(records.persons.size()));
  }
  return report;
}

vcard::ExportReport writeCards(const Records& records, vcard::CardVersion version,
                               OutputFile& output, ProgressBar& bar) {
  RecordKeys persons;
  persons.reserve(records.persons.size());
  for (const auto& person : records.persons) persons.push_back(person->key());
  const auto total = static_cast<double>(persons.size() + records.groups.size());
  std::size_t done = 0;
  return vcard::exportCards(persons, records.groups, version, [&](std::string_view card) {
    output.write(card);
    bar.show(100.0 * static_cast<double>(++done) / total);
    return true;
  });
}

vcard::ExportReport writeRecords(const Records& records, const std::string& format,
                                 OutputFile& output, ProgressBar& bar) {
  if (format == "host-vcard") return writeHostCards(records, output, bar);
  const auto version = format == "vcard4" ? vcard::CardVersion::V40 : vcard::CardVersion::V30;
  return writeCards(records, version, output, bar);
}

void exportRecords(const Context& context, const Arguments& arguments) {
  const OneMoment moment;
  // The discovery may have something to tell of the tags, which are in no card.
  const auto book = wantedBook(context, arguments);
  const failures::Watch watch;
  const auto records = recordsFor(arguments, book);
  OutputFile output(arguments.file);
  ProgressBar bar(context, "exporting");
  const auto report = writeRecords(records, arguments.format, output, bar);
  // What could not be listed or looked up is missing without a trace.
  if (watch.hasFailures()) throw storeFailure("not every record could be looked up", watch);
  output.commit();
  bar.wipe();
  if (report.gone > 0) {
    context.tell(counted(report.gone, "record") + " went while this was exported");
  }
  if (OutputFile::isStandardOutput(arguments.file)) return;
  context.tell("exported " + counted(report.persons, "person") + " and " +
               counted(report.groups, "group") + " to " + arguments.file);
}

}  // namespace

void declareExport(CLI::App& program, const Context& context) {
  auto* command = program.add_subcommand("export", "Write persons and groups as vCards");
  const auto arguments = std::make_shared<Arguments>();
  auto* persons = command->add_option("PERSON", arguments->persons, "Whom; all when none is named");
  command->add_option("--book", arguments->book, "Everything in this book")
      ->type_name("BOOK")
      ->excludes(persons);
  command
      ->add_option("-o,--output", arguments->file,
                   "Write to this file, whole or not at all; - is the standard output")
      ->type_name("FILE");
  command
      ->add_option("--format", arguments->format,
                   "host-vcard: the framework's own cards with their pictures, without groups")
      ->check(CLI::IsMember({"vcard3", "vcard4", "host-vcard"}))
      ->capture_default_str();
  command->callback([&context, arguments] { exportRecords(context, *arguments); });
}

}  // namespace ox::program
