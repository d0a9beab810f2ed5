// tag: the tags of one person.
#include <iostream>
#include <unordered_set>

#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/base/failures.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

struct Arguments {
  std::string person;
  std::vector<std::string> added;
  std::vector<std::string> removed;
};

void refuseContradictions(const Arguments& arguments) {
  const std::unordered_set<std::string_view> removed(arguments.removed.begin(),
                                                     arguments.removed.end());
  for (const auto& tag : arguments.added) {
    if (!removed.contains(tag)) continue;
    throw CommandError(kUsage, "\"" + tag + "\" cannot be both added and removed");
  }
}

void changeTags(const Context& context, const Arguments& arguments) {
  refuseContradictions(arguments);
  const auto person = findPerson(context, arguments.person);
  discoveredBooks(context);
  if (!arguments.added.empty() || !arguments.removed.empty()) {
    const WholeAct act;
    const failures::Watch watch;
    person->changeTags(arguments.removed, arguments.added);
    if (watch.hasFailures()) throw storeFailure("the tags were not changed", watch);
    saveEdits();
  }
  const auto tags = person->tagArray();
  if (context.json) {
    printJson(tags);
    return;
  }
  for (const auto& tag : tags) std::cout << terminalText(tag) << '\n';
}

}  // namespace

void declareTag(CLI::App& program, const Context& context) {
  auto* tag = program.add_subcommand("tag", "Show or change the tags of a person");
  const auto arguments = std::make_shared<Arguments>();
  tag->add_option("PERSON", arguments->person, "Who")->required();
  tag->add_option("--add", arguments->added, "A tag to add")->type_name("TAG")->expected(1);
  tag->add_option("--remove", arguments->removed, "A tag to take away")
      ->type_name("TAG")
      ->expected(1);
  for (auto* option : {tag->get_option("--add"), tag->get_option("--remove")}) {
    option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  }
  tag->callback([&context, arguments] { changeTags(context, *arguments); });
}

}  // namespace ox::program
