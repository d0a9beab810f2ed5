// forget: a person erased for good.
#include "ox/OxMacAddressBookSDK/admin/past.hpp"
#include "ox/base/failures.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/guarded_copy.hpp"
#include "oxcontacts/output/counted.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/past_persons.hpp"

namespace ox::program {
namespace {

// Somebody of whom the store knows nothing any more can be named by the ID: a copy may hold her.
RecordKey personToForget(const Context& context, const std::string& text) {
  const failures::Watch watch;
  try {
    return findPersonOfAnyTime(context, text);
  } catch (const CommandError& error) {
    const bool isGone = error.code() == kNotFound && !watch.hasFailures();
    if (!isGone || !text.ends_with(":ABPerson")) throw;
  }
  return RecordKey::of(text);
}

void forget(const Context& context, const std::string& text) {
  const auto person = personToForget(context, text);
  const auto name = nameOfAnyTime(person);
  // For everybody else: she is erased from it too.
  keepCopyBefore(context, "forget");
  const auto report = forgetPerson(person, name == person.text() ? std::string() : name);
  if (!report.found) throw CommandError(kNotFound, "there is nothing of \"" + text + "\"");
  if (context.json) {
    printJson({{"ID", person.text()}, {"copies", report.copies}, {"left", report.left}});
  } else {
    context.tell(
        "forgot " + name + ": erased from the store, its journal, the tags and " +
        (report.copies == 1 ? std::string("1 copy") : std::to_string(report.copies) + " copies") +
        "; this cannot be taken back");
  }
  for (const auto& left : report.left) Context::complain(left);
  if (!report.left.empty()) throw CommandError(kFailed, "not everything of her is erased");
}

}  // namespace

void declareForget(CLI::App& program, const Context& context) {
  auto* command = program.add_subcommand("forget", "Erase a person for good");
  const auto person = std::make_shared<std::string>();
  command->add_option("PERSON", *person, "Who, be she there or in the trash")->required();
  command->footer(
      "She is erased from the store, from what `log` tells, from the tags and from the copies that "
      "are kept; `undo` cannot bring her back. Backups and exports elsewhere are yours to remove.");
  command->callback([&context, person] { forget(context, *person); });
}

}  // namespace ox::program
