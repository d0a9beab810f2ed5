// export: persons and groups as vCards, or in another format.
#include <algorithm>
#include <array>
#include <iostream>
#include <optional>

#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/transfer/exporter.hpp"
#include "ox/transfer/format_export.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/progress_bar.hpp"
#include "oxcontacts/output/terminal_text.hpp"
#include "oxcontacts/output_file.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::vector<std::string> persons;
  std::string book;
  std::string file = "-";
  std::string format = "vcard3";
  bool keepsGoing = false;

  vcard::Unreadable unreadable() const {
    return keepsGoing ? vcard::Unreadable::LeaveOut : vcard::Unreadable::Fail;
  }
};

struct Records {
  Persons persons;
  RecordKeys groups;
};

// One thing that is not in the cards.
struct Missing {
  std::string record;
  std::string what;
  std::string reason;
};

struct FormatName {
  std::string_view name;
  formats::Format format;
};
// Those beside vCard.
constexpr std::array kFormats = {FormatName{"jcard", formats::Format::JCard},
                                 FormatName{"jscontact", formats::Format::JsContact},
                                 FormatName{"csv", formats::Format::Csv},
                                 FormatName{"ldif", formats::Format::Ldif}};

constexpr const char* kNotEveryRecord = "not every record could be looked up";

// A list that lacks damaged records alone is given the second time without a word.
void requireList() {
  const auto store = ABAddressBook::sharedAddressBook();
  {
    const failures::Watch first;
    store->people();
    if (!first.hasFailures()) return;
    for (const auto& failure : first.all()) {
      if (failure.kind != FailureKind::Corrupt) throw storeFailure(kNotEveryRecord, first);
    }
  }
  const failures::Watch again;
  store->people();
  if (again.hasFailures()) throw storeFailure(kNotEveryRecord, again);
}

// The ID of the book that is named; missing when none is.
std::optional<Text> wantedBook(const Context& context, const Arguments& arguments) {
  if (arguments.book.empty() || arguments.book == kAllBooks) return std::nullopt;
  return findBook(discoveredBooks(context), arguments.book)->ID();
}

// Named persons alone; else those of the book, or all, with their groups.
Records recordsFor(const Context& context, const Arguments& arguments,
                   const std::optional<Text>& book) {
  if (!arguments.persons.empty()) {
    auto inBook = context;
    inBook.book = arguments.book;
    return {findPersons(inBook, arguments.persons), {}};
  }
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

vcard::ExportReport writeCards(const Records& records, const Arguments& arguments,
                               OutputFile& output, ProgressBar& bar) {
  RecordKeys persons;
  persons.reserve(records.persons.size());
  for (const auto& person : records.persons) persons.push_back(person->key());
  const auto total = static_cast<double>(persons.size() + records.groups.size());
  std::size_t done = 0;
  const auto take = [&](std::string_view card) {
    output.write(card);
    bar.show(100.0 * std::min(1.0, static_cast<double>(++done) / total));
    return true;
  };
  const auto* format = std::ranges::find(kFormats, arguments.format, &FormatName::name);
  if (format != kFormats.end()) {
    return formats::exportAs(format->format, persons, records.groups, take, arguments.unreadable());
  }
  const auto version =
      arguments.format == "vcard4" ? vcard::CardVersion::V40 : vcard::CardVersion::V30;
  return vcard::exportCards(persons, records.groups, version, take, arguments.unreadable());
}

vcard::ExportReport writeRecords(const Records& records, const Arguments& arguments,
                                 OutputFile& output, ProgressBar& bar) {
  if (arguments.format == "host-vcard") return writeHostCards(records, output, bar);
  return writeCards(records, arguments, output, bar);
}

const char* nameOf(vcard::MissingPart::What what) {
  switch (what) {
    case vcard::MissingPart::What::Record:
      return "the record";
    case vcard::MissingPart::What::Picture:
      return "its picture";
    case vcard::MissingPart::What::Members:
      break;
  }
  return "its members";
}

// What is not in the cards: records that could not be listed, then what could not be read.
std::vector<Missing> missingIn(const vcard::ExportReport& report, const failures::Watch& listing) {
  std::vector<Missing> missing;
  for (const auto& failure : listing.all()) missing.push_back({"", "a record", failure.reason});
  // A watch keeps so many of them, and counts all.
  if (const auto kept = missing.size(); listing.counts().failures > kept) {
    const auto more = listing.counts().failures - kept;
    missing.push_back({"", counted(more, "more record"), "their rows are damaged"});
  }
  for (const auto& part : report.missing) {
    missing.push_back({part.record.text(), nameOf(part.what), part.reason});
  }
  return missing;
}

void tellMissing(const Context& context, const std::vector<Missing>& missing) {
  if (context.json) {
    JsonList list;
    for (const auto& [record, what, reason] : missing) {
      list.add({{"record", record}, {"what", what}, {"reason", reason}});
    }
    return list.close();
  }
  for (const auto& [record, what, reason] : missing) {
    const auto whose = record.empty() ? what : record + ": " + what;
    std::cout << "missing: " << terminalText(whose + ": " + reason) << '\n';
  }
}

void tellCounts(const Context& context, const vcard::ExportReport& report,
                const std::string& file) {
  context.tell("exported " + counted(report.persons, "person") + " and " +
               counted(report.groups, "group") + " to " + file);
}

void tellGroupsLeftOut(const Context& context, const Arguments& arguments, const Records& records) {
  if (arguments.format != "csv" || records.groups.empty()) return;
  context.tell("a table has no groups: " + counted(records.groups.size(), "group") + " left out");
}

void tellGone(const Context& context, const vcard::ExportReport& report) {
  if (report.gone == 0) return;
  context.tell(counted(report.gone, "record") + " went while this was exported");
}

void refuseWhatCannotKeepGoing(const Arguments& arguments) {
  if (!arguments.keepsGoing) return;
  if (arguments.format == "host-vcard") {
    throw CommandError(kUsage, "--keep-going does not go with host-vcard");
  }
  if (OutputFile::isStandardOutput(arguments.file) || OutputFile::isStream(arguments.file)) {
    throw CommandError(kUsage, "--keep-going needs a file of its own");
  }
}

void exportRecords(const Context& context, const Arguments& arguments) {
  refuseWhatCannotKeepGoing(arguments);
  const OneMoment moment;
  // Whoever lists first is told of each record whose row is damaged.
  const failures::Watch listing;
  if (arguments.persons.empty()) requireList();  // one who is named is looked up alone
  if (listing.hasFailures() && !arguments.keepsGoing) throw storeFailure(kNotEveryRecord, listing);
  // The discovery may have something to tell of the tags, which are in no card.
  const auto book = wantedBook(context, arguments);
  const failures::Watch watch;
  const auto records = recordsFor(context, arguments, book);
  OutputFile output(arguments.file);
  ProgressBar bar(context, "exporting");
  const auto report = writeRecords(records, arguments, output, bar);
  // What could not be listed or looked up is missing without a trace.
  if (watch.hasFailures()) throw storeFailure(kNotEveryRecord, watch);
  const auto missing = missingIn(report, listing);
  const bool isWhole = missing.empty();
  const auto file = isWhole ? arguments.file : output.commitBeside();
  if (isWhole) output.commit();
  bar.wipe();
  if (arguments.keepsGoing) tellMissing(context, missing);
  tellGone(context, report);
  tellGroupsLeftOut(context, arguments, records);
  if (!OutputFile::isStandardOutput(file)) tellCounts(context, report, file);
  // In its place something whole may stand.
  if (!isWhole) {
    throw CommandError(kFailed,
                       "not everything could be read; " + arguments.file + " is as it was");
  }
}

}  // namespace

void declareExport(CLI::App& program, const Context& context) {
  auto* command =
      program.add_subcommand("export", "Write persons and groups as vCards or in another format");
  const auto arguments = std::make_shared<Arguments>();
  command->add_option("PERSON", arguments->persons, "Whom; all when none is named");
  command->add_option("--book", arguments->book, "Everything in this book, or PERSON of it")
      ->type_name("BOOK");
  command
      ->add_option("-o,--output", arguments->file,
                   "Write to this file, whole or not at all; - is the standard output")
      ->type_name("FILE");
  command
      ->add_option("--format", arguments->format,
                   "jcard and jscontact are JSON, csv a table without groups, ldif a directory; "
                   "host-vcard: the framework's own cards with their pictures, without groups")
      ->check(
          CLI::IsMember({"vcard3", "vcard4", "host-vcard", "jcard", "jscontact", "csv", "ldif"}))
      ->capture_default_str();
  command->add_flag("--keep-going", arguments->keepsGoing,
                    "Leave out what cannot be read, and write the rest beside FILE");
  command->footer(
      "Nothing is written when a record cannot be read. With --keep-going the others are written "
      "to "
      "FILE.partial, FILE stays as it was, and each record, picture and list of members that is "
      "missing is named; the exit code is 1 all the same. Where everything can be read it is an "
      "export like any other.");
  command->callback([&context, arguments] { exportRecords(context, *arguments); });
}

}  // namespace ox::program
