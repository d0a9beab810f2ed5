// log: what was done to the store, or to one person.
#include "ox/OxMacAddressBookSDK/admin/stored_names.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/base/text/joined.hpp"
#include "ox/platform/journal/journal.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/past_values.hpp"
#include "oxcontacts/output/table.hpp"
#include "oxcontacts/past_persons.hpp"
#include "oxcontacts/time_text.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string person;
  std::size_t limit = 20;
  std::optional<std::int64_t> keepDays;
  std::optional<std::int64_t> keepMegabytes;
};

void setBounds(const Context& context, const Arguments& arguments) {
  auto bounds = journal::bounds();
  if (arguments.keepDays) bounds.days = *arguments.keepDays;
  if (arguments.keepMegabytes) bounds.bytes = *arguments.keepMegabytes << 20U;
  journal::setBounds(bounds);
  if (context.json) {
    printJson({{"days", bounds.days}, {"megabytes", bounds.bytes >> 20U}});
    return;
  }
  context.tell("what was done is kept for " +
               counted(static_cast<std::uint64_t>(bounds.days), "day") +
               (bounds.bytes == 0 ? std::string(", in 64 megabytes or a tenth of the store")
                                  : ", in " + std::to_string(bounds.bytes >> 20U) + " megabytes"));
}

Json numberOrNull(const std::optional<std::int64_t>& number) {
  return number ? Json(*number) : Json();
}

Json commandJson(const JournalCommand& command) {
  return {{"number", command.number},
          {"time", utcTime(command.at)},
          {"program", command.origin.program},
          {"command", command.origin.command},
          {"records", command.added + command.changed + command.removed},
          {"added", command.added},
          {"changed", command.changed},
          {"removed", command.removed},
          {"takesBack", numberOrNull(command.origin.undoes)},
          {"takenBackBy", numberOrNull(command.takenBackBy)}};
}

std::string titleOf(const JournalCommand& command) {
  const auto& origin = command.origin;
  auto title = origin.program + (origin.command.empty() ? "" : " " + origin.command);
  if (origin.undoes && *origin.undoes != 0) {
    title += " (takes back " + std::to_string(*origin.undoes) + ")";
  }
  if (command.takenBackBy) {
    title += " (taken back by " + std::to_string(*command.takenBackBy) + ")";
  }
  return title;
}

void logCommands(const Context& context, std::size_t limit) {
  const auto commands = journal::commands(limit);
  if (context.json) {
    JsonList list;
    for (const auto& command : commands) list.add(commandJson(command));
    list.close();
    return;
  }
  constexpr auto kRight = Table::Align::Right;
  Table table({{"NUMBER", kRight},
               {"TIME"},
               {"ADDED", kRight},
               {"CHANGED", kRight},
               {"REMOVED", kRight},
               {"COMMAND"}});
  for (const auto& command : commands) {
    table.addRow({std::to_string(command.number), localTime(command.at),
                  std::to_string(command.added), std::to_string(command.changed),
                  std::to_string(command.removed), titleOf(command)});
  }
  table.print(context);
}

// One line of what was done to a person.
struct Entry {
  const JournalChange* change;
  std::string what;
  std::string property;
  std::string title;
  Json before;
  Json after;
  std::string readable;
};

std::string arrow(const std::string& before, const std::string& after) {
  return (before.empty() ? "nothing" : before) + " -> " + (after.empty() ? "nothing" : after);
}

void addValues(const JournalChange& change, std::vector<Entry>& entries) {
  PropertyBag all = change.before;
  for (const auto& [id, value] : change.after.entries()) all.set(id, value);
  for (const auto& [id, value] : all.entries()) {
    const auto& before = change.before.value(id);
    const auto& after = change.after.value(id);
    const auto name = property_table::nameOf(id);
    entries.push_back({&change, "changed", propertyNameOfStored(name), propertyTitleOfStored(name),
                       jsonOfStored(before), jsonOfStored(after),
                       arrow(readableValue(before), readableValue(after))});
  }
  if (change.pictureChanged) {
    entries.push_back({&change, "changed", "Thumbnail", "Photo", {}, {}, "another one"});
  }
}

void addLink(const JournalChange& change, const RecordKey& person, std::vector<Entry>& entries) {
  const bool isLinked = change.kind == JournalChange::Kind::Linked;
  const auto name = nameOfAnyTime(change.record == person ? change.other : change.record);
  entries.push_back({&change, isLinked ? "put into group" : "taken out of group", "Group", "Group",
                     isLinked ? Json() : Json(name), isLinked ? Json(name) : Json(), name});
}

void addEntries(const JournalChange& change, const RecordKey& person, std::vector<Entry>& entries) {
  using Kind = JournalChange::Kind;
  switch (change.kind) {
    case Kind::Added:
      entries.push_back({&change, "added", {}, {}, {}, {}, {}});
      return;
    case Kind::Removed:
      entries.push_back(
          {&change, "removed", {}, {}, jsonOfStored(change.before), {}, nameIn(change.before)});
      return;
    case Kind::Restored:
      entries.push_back({&change, "brought back", {}, {}, {}, {}, {}});
      return;
    case Kind::Changed:
      return addValues(change, entries);
    case Kind::Linked:
    case Kind::Unlinked:
      return addLink(change, person, entries);
    case Kind::Tagged:
      entries.push_back({&change, "changed", "Tags", "Tags", change.tags.before, change.tags.after,
                         arrow(joined(change.tags.before, ", "), joined(change.tags.after, ", "))});
      return;
    case Kind::AccountAdded:
    case Kind::AccountRemoved:
      return;
  }
}

Json entryJson(const Entry& entry) {
  const auto& origin = entry.change->origin;
  return {{"number", entry.change->command},
          {"time", utcTime(entry.change->at)},
          {"program", origin.program},
          {"command", origin.command},
          {"what", entry.what},
          {"property", entry.property.empty() ? Json() : Json(entry.property)},
          {"before", entry.before},
          {"after", entry.after}};
}

void logPerson(const Context& context, const Arguments& arguments) {
  const OneMoment moment;
  const auto person = findPersonOfAnyTime(context, arguments.person);
  const auto changes = journal::historyOf(person, arguments.limit);
  std::vector<Entry> entries;
  for (const auto& change : changes) addEntries(change, person, entries);
  if (context.json) {
    JsonList list;
    for (const auto& entry : entries) list.add(entryJson(entry));
    list.close();
    return;
  }
  Table table({{"NUMBER", Table::Align::Right}, {"TIME"}, {"WHAT"}, {""}, {"BEFORE AND AFTER"}});
  for (const auto& entry : entries) {
    table.addRow({std::to_string(entry.change->command), localTime(entry.change->at), entry.what,
                  entry.title, entry.readable});
  }
  table.print(context);
}

}  // namespace

void declareLog(CLI::App& program, const Context& context) {
  auto* log = program.add_subcommand("log", "Show what was done, the last first");
  const auto arguments = std::make_shared<Arguments>();
  log->add_option("PERSON", arguments->person, "What was done to her alone, value by value");
  log->add_option("--limit", arguments->limit, "At most so many commands or changes (20)")
      ->type_name("N");
  constexpr std::int64_t kMostDays = 36'500;
  constexpr std::int64_t kMostMegabytes = 1'000'000;
  log->add_option("--keep-days", arguments->keepDays, "Keep what was done so long (90)")
      ->type_name("N")
      ->check(CLI::Range(std::int64_t{1}, kMostDays));
  log->add_option("--keep-megabytes", arguments->keepMegabytes,
                  "And so much of it; 0: 64, or a tenth of the store where that is more")
      ->type_name("M")
      ->check(CLI::Range(std::int64_t{0}, kMostMegabytes));
  log->footer("NUMBER is what `undo` takes. Somebody who is gone is found by ID or name too.");
  log->callback([&context, arguments] {
    if (arguments->keepDays || arguments->keepMegabytes) {
      setBounds(context, *arguments);
    } else if (arguments->person.empty()) {
      logCommands(context, arguments->limit);
    } else {
      logPerson(context, *arguments);
    }
  });
}

}  // namespace ox::program
