// recover: what can be read of a damaged store, as a new one.
#include <iostream>
#include <list>

#include "ox/OxMacAddressBookSDK/admin/store_recovery.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/interruption.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string from;
  std::string to;
};

// A recovery whose files go when a signal ends the program before they are put in their places.
struct GuardedRecovery {
  GuardedRecovery(const std::string& from, const std::string& to) {
    const SignalsHeld held;
    recovery.emplace(from, to);
    for (auto& file : recovery->files()) guards.emplace_back(std::move(file));
  }

  std::list<GoesWhenInterrupted> guards;
  std::optional<StoreRecovery> recovery;
};

void tell(const Context& context, const Arguments& arguments, const SalvageReport& report) {
  if (context.json) {
    printJson({{"groups", report.records.groups},
               {"persons", report.records.persons},
               {"links", report.links},
               {"pictures", report.pictures},
               {"tags", report.tags},
               {"damages", report.damages},
               {"losses", report.losses}});
    return;
  }
  for (const auto& damage : report.damages) std::cout << "damage: " << terminalText(damage) << '\n';
  for (const auto& loss : report.losses) std::cout << "lost: " << terminalText(loss) << '\n';
  context.tell("recovered " + counted(report.records.groups, "group") + ", " +
               counted(report.records.persons, "person") + ", " +
               counted(report.pictures, "picture") + ", " + counted(report.tags, "tag") + " into " +
               arguments.to);
}

void recover(const Context& context, const Arguments& arguments) {
  GuardedRecovery guarded(arguments.from, arguments.to);
  const auto report = guarded.recovery->take();
  guarded.recovery->put();
  tell(context, arguments, report);
  if (!report.losses.empty()) throw CommandError(kDoneWithRefusals, "");
}

}  // namespace

void declareRecover(CLI::App& program, const Context& context) {
  auto* recover =
      program.add_subcommand("recover", "Bring what a damaged store holds into a new one");
  const auto arguments = std::make_shared<Arguments>();
  recover->add_option("FILE", arguments->from, "The damaged store")->required();
  recover->add_option("-o,--output", arguments->to, "The new store")->required();
  recover->footer(
      "FILE and its log are only read; end every program that uses it before. Every contact whose "
      "own bytes are whole comes back, with its identifier, groups, picture, account and tags; "
      "what "
      "is lost is named, and then the exit code is 3. The journal stays behind.\n`--store NEW` "
      "works "
      "with the new store; look at it before it takes the place of the old one.");
  recover->callback([&context, arguments] { program::recover(context, *arguments); });
}

}  // namespace ox::program
