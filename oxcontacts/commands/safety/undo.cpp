// undo, redo: a command taken back, and that taken back again.
#include "ox/OxMacAddressBookSDK/admin/past.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/past_persons.hpp"

namespace ox::program {
namespace {

std::string told(const Failure& stays) {
  if (stays.subject.empty()) return stays.reason;
  return nameOfAnyTime(RecordKey::of(stays.subject)) + ": " + stays.reason;
}

void tell(const Context& context, const UndoReport& report) {
  if (!report.done) throw CommandError(report.isUnknown ? kNotFound : kFailed, report.reason);
  if (context.json) {
    Json stays = Json::array();
    for (const auto& each : report.stays) {
      stays.push_back({{"record", each.subject.empty() ? Json() : Json(each.subject)},
                       {"reason", each.reason}});
    }
    printJson({{"takenBack", report.command},
               {"command", report.origin.command},
               {"number", report.number},
               {"records", report.records},
               {"stays", std::move(stays)}});
  } else {
    const auto& command = report.origin.command;
    context.tell("took back " + std::to_string(report.command) +
                 (command.empty() ? "" : " (" + command + ")") + ": " +
                 counted(report.records, "record"));
  }
  for (const auto& each : report.stays) Context::complain(told(each));
  if (!report.stays.empty()) throw CommandError(kDoneWithRefusals, "");
}

}  // namespace

void declareUndo(CLI::App& program, const Context& context) {
  auto* undo = program.add_subcommand("undo", "Take a command back, the last one without a number");
  const auto number = std::make_shared<std::int64_t>(0);
  auto* option = undo->add_option("N", *number, "Its number, as `log` gives it");
  undo->footer(
      "What was changed since by other commands stays, value by value, and is named; the exit code "
      "is then 3. Tags, groups and photos come back too. `redo` takes the undo back.");
  undo->callback([&context, number, option] {
    tell(context, undoCommand(option->count() > 0 ? std::optional(*number) : std::nullopt));
  });
  auto* redo = program.add_subcommand("redo", "Take the last undo back");
  redo->callback([&context] { tell(context, redoCommand()); });
}

}  // namespace ox::program
