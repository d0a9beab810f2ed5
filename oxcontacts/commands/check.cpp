// check: what is wrong with the store and with its tags.
#include <iostream>

#include "ox/OxMacAddressBookSDK/admin/store_problems.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

void checkStore(const Context& context) {
  const auto problems = problemsOfStoreAndTags();
  if (context.json) {
    printJson({{"ok", problems.empty()}, {"problems", problems}});
  } else {
    for (const auto& problem : problems) std::cout << terminalText(problem) << '\n';
    if (problems.empty()) std::cout << "sound\n";
  }
  if (!problems.empty()) throw CommandError(kFailed, "");
}

}  // namespace

void declareCheck(CLI::App& program, const Context& context) {
  auto* check = program.add_subcommand("check", "Check the store and the tags");
  check->callback([&context] { checkStore(context); });
}

}  // namespace ox::program
