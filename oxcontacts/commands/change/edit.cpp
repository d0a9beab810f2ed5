// edit: a person as a text in the user's editor.
#include <iostream>
#include <sstream>

#include "ox/OxMacAddressBookSDK/admin/whole_act.hpp"
#include "ox/base/failures.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/editor.hpp"
#include "oxcontacts/edit/person_yaml.hpp"
#include "oxcontacts/edit/saving.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/name_and_id.hpp"
#include "oxcontacts/output/person_json.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

std::string asComment(const std::string& text) {
  return "# " + terminalText(text) + "\n";
}

std::string headOf(const _ABPerson& person) {
  return asComment(person.displayName().value_or("") + ", " + person.key().shortText() + ", book " +
                   BookNames().nameOf(person.addressBookID())) +
         "# Lists take lines of \"- LABEL: VALUE\", or \"- VALUE\" without a label. A property "
         "without\n"
         "# a value has none. An empty file, or one that is left as it is, changes nothing.\n\n";
}

bool wantsAnotherTry(const std::string& why) {
  if (!Context::canAsk()) return false;
  Context::complain(why);
  std::cerr << "Edit it again? [Y/n] " << std::flush;
  std::string answer;
  return std::getline(std::cin, answer) && answer != "n" && answer != "N" && answer != "no";
}

// But for comments, of which there are some from the beginning.
bool holdsNothing(const std::string& text) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const auto first = line.find_first_not_of(" \t\r");
    if (first != std::string::npos && line[first] != '#') return false;
  }
  return true;
}

enum class Edited : std::uint8_t { Nothing, Saved, Overtaken };

Edited takeText(const PersonText& before, const std::string& text, _ABPerson& person) {
  const auto after = readYaml(text);
  // A value that was read a moment ago counts for a few milliseconds, in which a script may have
  // edited and another program written. This looks at the store as it is.
  if (!ABAddressBook::sharedAddressBook()->recordForKey(person.key())) {
    throw CommandError(kNotFound, nameAndId(person) + " was removed meanwhile");
  }
  // The act is no longer than the store's part of it: somebody may write for hours.
  const WholeAct act;
  const failures::Watch watch;
  std::vector<std::string> overtaken;
  if (!applyEdits(before, after, person, overtaken)) return Edited::Nothing;
  if (!watch.isClear()) giveUp(watch);
  const bool saved = saveEdits();
  for (const auto& each : overtaken) {
    Context::complain("another program had written " + each + " meanwhile, which yours replaces");
  }
  return saved ? Edited::Saved : Edited::Overtaken;
}

// Until the text can be read and the store has taken it, or nobody wants to try again.
Edited editUntilTaken(const Context& context, _ABPerson& person) {
  const auto before = textOf(person);
  const auto yaml = headOf(person) + yamlOf(before);
  EditedText file(yaml);
  for (;;) {
    const auto text = file.edit(context.config.textOf("editor"));
    if (text == yaml || holdsNothing(text)) return Edited::Nothing;
    try {
      return takeText(before, text, person);
    } catch (const CommandError& error) {
      if (wantsAnotherTry(error.what())) continue;
      throw CommandError(error.code(),
                         error.what() + std::string("; your text is kept in ") + file.keep());
    }
  }
}

void editPerson(const Context& context, const std::string& name) {
  const auto person = findPerson(context, name);
  // Makes every property known that books add to those of the store.
  discoveredBooks(context);
  const auto edited = editUntilTaken(context, *person);
  if (edited == Edited::Nothing) return context.tell("nothing was changed");
  if (edited == Edited::Overtaken) return;
  if (context.json) {
    printJson(personJson(*person));
  } else {
    context.tell("changed " + nameAndId(*person));
  }
}

}  // namespace

void declareEdit(CLI::App& program, const Context& context) {
  auto* edit = program.add_subcommand(
      "edit", "Edit a person in $VISUAL, $EDITOR, the configured editor or vi, as YAML");
  const auto name = std::make_shared<std::string>();
  edit->add_option("PERSON", *name, "Who")->required();
  edit->callback([&context, name] { editPerson(context, *name); });
}

}  // namespace ox::program
