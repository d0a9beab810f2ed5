// copies: what is kept of the store from before it was changed.
#include <algorithm>

#include "ox/OxMacAddressBookSDK/admin/past.hpp"
#include "ox/OxMacAddressBookSDK/admin/store_copies.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/guarded_copy.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {
namespace {

Json copyJson(const StoredCopy& copy) {
  const auto count = [&](std::uint64_t RecordCounts::*kind) {
    return copy.counts ? Json((*copy.counts).*kind) : Json();
  };
  return {{"name", copy.name},
          {"path", copy.path},
          {"time", copy.time},
          {"reason", copy.reason},
          {"persons", count(&RecordCounts::persons)},
          {"groups", count(&RecordCounts::groups)},
          {"bytes", copy.bytes}};
}

void listCopies(const Context& context) {
  const auto copies = storeCopies();
  if (context.json) {
    JsonList list;
    for (const auto& copy : copies) list.add(copyJson(copy));
    list.close();
    return;
  }
  Table table({{"TIME"},
               {"BEFORE"},
               {"PERSONS", Table::Align::Right},
               {"GROUPS", Table::Align::Right},
               {"BYTES", Table::Align::Right},
               {"NAME"}});
  for (const auto& copy : copies) {
    const auto count = [&](std::uint64_t RecordCounts::*kind) {
      return copy.counts ? std::to_string((*copy.counts).*kind) : std::string("unreadable");
    };
    table.addRow({copy.time, copy.reason, count(&RecordCounts::persons),
                  count(&RecordCounts::groups), std::to_string(copy.bytes), copy.name});
  }
  table.print(context);
}

void restoreCopy(const Context& context, const std::string& name) {
  const auto copies = storeCopies();
  if (std::ranges::find(copies, name, &StoredCopy::name) == copies.end()) {
    throw CommandError(kNotFound, "there is no copy \"" + name + "\"");
  }
  // The oldest copy goes when it has served, not before: it may be the one that is restored.
  const auto kept = keepCopyBefore(context, "copies-restore", Sweep::Later);
  const auto report = restoreStoreCopy(name);
  sweepStoreCopies(kept);
  if (!report.done) throw CommandError(kFailed, report.reason);
  if (context.json) {
    printJson({{"number", report.number}, {"records", report.records}});
  } else {
    context.tell("restored " + name + ": " + counted(report.records, "record") + " changed");
  }
}

}  // namespace

void declareCopies(CLI::App& program, const Context& context) {
  auto* copies =
      program.add_subcommand("copies", "List the copies kept of the store, or restore one");
  auto* restore = copies->add_subcommand("restore", "Make the store hold what a copy holds");
  const auto name = std::make_shared<std::string>();
  restore->add_option("NAME", *name, "Its name, as `copies` gives it")->required();
  restore->footer("A copy of the store as it is now is kept first. `undo` takes it back.");
  restore->callback([&context, name] { restoreCopy(context, *name); });
  copies->footer(
      "A copy is kept from before each migration of the store and each command that replaces much "
      "(restore, accounts remove --force, forget, copies restore), and before anything is mended "
      "(check --repair); the last three stay, in the folder STORE.copies. Each is a store: "
      "`--store PATH` works with it.");
  copies->require_subcommand(0, 1);
  copies->callback([copies, &context] {
    if (copies->get_subcommands().empty()) listCopies(context);
  });
}

}  // namespace ox::program
