// check: what is wrong with the store and with its tags, and the mending of what can be mended.
#include <iostream>

#include "ox/OxMacAddressBookSDK/admin/store_problems.hpp"
#include "ox/OxMacAddressBookSDK/admin/store_repair.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

void printProblems(const std::vector<std::string>& problems) {
  for (const auto& problem : problems) std::cout << terminalText(problem) << '\n';
  if (problems.empty()) std::cout << "sound\n";
}

void checkStore(const Context& context) {
  const auto problems = problemsOfStoreAndTags();
  if (context.json) {
    printJson({{"ok", problems.empty()}, {"problems", problems}});
  } else {
    printProblems(problems);
  }
  if (!problems.empty()) throw CommandError(kFailed, "");
}

void repairStore(const Context& context) {
  const auto report = repairStoreAndTags();
  if (context.json) {
    printJson({{"ok", report.left.empty()},
               {"mended", report.mended},
               {"problems", report.left},
               {"copy", report.copy.empty() ? Json() : Json(report.copy)}});
  } else {
    for (const auto& mended : report.mended) {
      std::cout << "mended: " << terminalText(mended) << '\n';
    }
    printProblems(report.left);
  }
  if (!report.copy.empty()) context.tell("the store as it was: " + report.copy);
  if (report.left.empty()) return;
  throw CommandError(
      kFailed, "not everything can be mended; `recover` brings what is whole into a new store");
}

}  // namespace

void declareCheck(CLI::App& program, const Context& context) {
  auto* check = program.add_subcommand("check", "Check the store and the tags");
  const auto repairs = std::make_shared<bool>(false);
  check->add_flag("--repair", *repairs, "Mend what follows from what is whole");
  check->footer(
      "--repair makes damaged indexes anew, works out what records are found by, and removes "
      "links to nowhere, in one transaction; from a store that is sound then it removes, as a "
      "command that `undo` takes back, tags of persons who are gone and records that a program "
      "left without any content more than a day ago. Each thing is named. A copy of the store is "
      "kept first (`copies`). Values that are damaged cannot be mended: `recover` brings the "
      "others into a new store.");
  check->callback([&context, repairs] { *repairs ? repairStore(context) : checkStore(context); });
}

}  // namespace ox::program
