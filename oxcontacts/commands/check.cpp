#include "ox/platform/store/check.hpp"

#include <iostream>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/base/store_location.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

void checkStore(const Context& context) {
  auto problems = storeProblems(contactStorePath());
  for (auto& problem : OxTagManager::problems()) problems.push_back(std::move(problem));
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
