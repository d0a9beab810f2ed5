// completion: what a shell offers for the word that is being typed.
#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <optional>

#include "ox/OxMacAddressBookSDK/admin/accounts.hpp"
#include "ox/OxMacAddressBookSDK/ground/one_moment.hpp"
#include "ox/base/store_location.hpp"
#include "ox/base/text/case.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "oxcontacts/commands/command_table.hpp"
#include "oxcontacts/commands/commands.hpp"
#include "oxcontacts/edit/assignment.hpp"
#include "oxcontacts/files.hpp"
#include "oxcontacts/find.hpp"
#include "oxcontacts/output/terminal_text.hpp"

namespace ox::program {
namespace {

using Words = std::vector<std::string>;

// For the shell's own completion of file names.
constexpr const char* kFiles = ":files";
// More would only fill the screen.
constexpr std::size_t kMostNames = 100;

constexpr const char* kBash = R"sh(# oxcontacts completion for bash
_oxcontacts() {
  local line answer
  answer=$(oxcontacts complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
  COMPREPLY=()
  if [ "$answer" = ":files" ]; then
    compopt -o default
    return
  fi
  while IFS= read -r line; do
    [ -n "$line" ] && COMPREPLY+=("$(printf %q "$line")")
  done <<<"$answer"
}
complete -F _oxcontacts oxcontacts
)sh";

constexpr const char* kZsh = R"sh(#compdef oxcontacts
_oxcontacts() {
  local -a answers
  answers=("${(@f)$(oxcontacts complete -- "${(@Q)words[2,CURRENT]}" 2>/dev/null)}")
  if [[ "$answers[1]" = ":files" ]]; then
    _files
  else
    compadd -U -a answers
  fi
}
if [ "$funcstack[1]" = "_oxcontacts" ]; then
  _oxcontacts "$@"
else
  compdef _oxcontacts oxcontacts
fi
)sh";

constexpr const char* kFish = R"sh(# oxcontacts completion for fish
function __oxcontacts_complete
  set -l words (commandline -opc)
  set -l answer (oxcontacts complete -- $words[2..-1] (commandline -ct) 2>/dev/null)
  if test "$answer" = ":files"
    __fish_complete_path (commandline -ct)
  else
    printf '%s\n' $answer
  end
end
complete -c oxcontacts -f -a '(__oxcontacts_complete)'
)sh";

// The word as it is meant: shells hand it over with what quotes it.
std::string plain(const std::string& word) {
  std::string text;
  for (std::size_t i = 0; i < word.size(); ++i) {
    const char c = word[i];
    if (c == '\\' && i + 1 < word.size()) {
      text += word[++i];
    } else if (c != '\'' && c != '"') {
      text += c;
    }
  }
  return text;
}

const CLI::Option* optionCalled(const CLI::App& command, const std::string& word) {
  for (const auto* app = &command; app != nullptr; app = app->get_parent()) {
    for (const auto* option : optionsOf(*app)) {
      if (option->check_name(word)) return option;
    }
  }
  return nullptr;
}

// Where the last word stands.
struct Place {
  const CLI::App* command = nullptr;
  const CLI::Option* valueOf = nullptr;  // the option whose value it is
  std::size_t positional = 0;            // how many stand before it
};

Place placeOfLast(const CLI::App& program, const Words& words) {
  Place place{&program};
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    if (words[i].starts_with('-')) {
      const auto* option = optionCalled(*place.command, words[i]);
      const bool takesValue = option != nullptr && option->get_items_expected_max() > 0;
      if (takesValue && i + 2 == words.size()) place.valueOf = option;
      if (takesValue) ++i;
      continue;
    }
    const auto below = place.command->get_subcommands(
        [&](const CLI::App* each) { return each->check_name(words[i]); });
    if (!below.empty() && place.positional == 0) {
      place.command = below.front();
    } else {
      ++place.positional;
    }
  }
  return place;
}

const CLI::Option* positionalAt(const CLI::App& command, std::size_t number) {
  const CLI::Option* last = nullptr;
  for (const auto* option : positionalsOf(command)) {
    last = option;
    if (number-- == 0) return option;
  }
  return last != nullptr && last->get_items_expected_max() > 1 ? last : nullptr;
}

template <typename Records>
void addNames(const Records& records, Words& names) {
  for (const auto& record : records) {
    if (const auto name = record->displayName(); name && !name->empty()) names.push_back(*name);
  }
}

Words personsCalled(const std::string& beginning) {
  const auto store = ABAddressBook::sharedAddressBook();
  Words names;
  for (const auto& record : beginning.empty() ? store->people() : store->peopleNamed(beginning)) {
    const auto person = hostPerson(record);
    const auto name = person ? person->displayName() : std::nullopt;
    if (name && !name->empty()) names.push_back(*name);
    if (names.size() > kMostNames) break;
  }
  return names;
}

Words namesOf(const std::string& kind, const std::string& beginning) {
  Words names;
  if (kind == "PERSON" || kind == "OTHER") return personsCalled(beginning);
  if (kind == "GROUP") {
    for (const auto& record : ABAddressBook::sharedAddressBook()->groups()) {
      addNames(std::vector{hostGroup(record)}, names);
    }
  } else if (kind == "BOOK" || kind == "ACCOUNT") {
    for (const auto& account : accounts()) {
      const auto book = OxMacAddressBook::initWithContainer(account);
      names.push_back((kind == "BOOK" ? book->name() : account->name()).value_or(""));
    }
  } else if (kind == "TAG") {
    for (const auto& record : ABAddressBook::sharedAddressBook()->people()) {
      const auto person = hostPerson(record);
      for (auto& tag : person ? person->tagArray() : Words()) names.push_back(std::move(tag));
    }
  } else if (kind == "PROPERTY=VALUE") {
    for (const auto& property : assignableProperties()) {
      names.push_back(shortNameOf(*property) + "=");
    }
  }
  return names;
}

// What may stand for a word of that kind: "BOOK", "WHEN:{auto,always,never}".
Words answersFor(const CLI::Option& option, const std::string& beginning) {
  auto [type, choices] = valueOf(option);
  if (!choices.empty()) return choices;
  if (option.get_positional()) type = option.get_name(true);
  if (type == "FILE" || type == "PATH") return {kFiles};
  const bool needsStore = type != "PROPERTY=VALUE";
  if (needsStore && isMissing(contactStore().file())) return {};
  std::optional<OneMoment> moment;
  if (needsStore) moment.emplace();
  return namesOf(type, beginning);
}

Words answersFor(const CLI::App& program, const Words& words) {
  const auto place = placeOfLast(program, words);
  const auto& last = words.back();
  if (place.valueOf != nullptr) return answersFor(*place.valueOf, last);
  Words answers;
  if (last.starts_with('-')) {
    for (const auto* app = place.command; app != nullptr; app = app->get_parent()) {
      for (const auto* option : optionsOf(*app)) {
        for (const auto& name : option->get_lnames()) answers.push_back("--" + name);
      }
    }
    return answers;
  }
  if (place.positional == 0) {
    for (const auto* command : commandsBelow(*place.command)) {
      answers.push_back(command->get_name());
    }
  }
  const auto* positional = positionalAt(*place.command, place.positional);
  if (positional == nullptr) return answers;
  if (place.command->get_name() == "help") {
    for (const auto* command : commandsBelow(program)) answers.push_back(command->get_name());
    return answers;
  }
  for (auto& answer : answersFor(*positional, last)) answers.push_back(std::move(answer));
  return answers;
}

// What is wrong with the configuration is told when the command runs.
std::string configuredStore(const Words& words) {
  const auto file = std::ranges::find(words, "--config");
  const bool isNamed = file != words.end() && file + 1 != words.end();
  try {
    return Config::read(isNamed ? *(file + 1) : std::string()).textOf("store");
  } catch (const CommandError&) {
    return {};
  }
}

void printAnswers(const CLI::App& program, const Words& words) {
  const auto store = std::ranges::find(words, "--store");
  if (store != words.end() && store + 1 != words.end()) {
    useContactStore(*(store + 1));
  } else if (const char* named = std::getenv("OX_CONTACT_STORE"); !named || *named == '\0') {
    const auto configured = configuredStore(words);
    if (!configured.empty()) useContactStore(configured);
  }
  const auto beginning = foldedForSearch(words.back());
  auto answers = answersFor(program, words);
  std::ranges::sort(answers);
  answers.erase(std::unique(answers.begin(), answers.end()), answers.end());
  for (const auto& answer : answers) {
    const bool fits = answer == kFiles || foldedForSearch(answer).starts_with(beginning);
    if (fits) std::cout << terminalText(answer) << '\n';
  }
}

}  // namespace

void declareComplete(CLI::App& program, const Context&) {
  auto* completion =
      program.add_subcommand("completion", "Print what makes a shell complete commands and names");
  const auto shell = std::make_shared<std::string>();
  completion->add_option("SHELL", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  completion->footer(
      "bash: source <(oxcontacts completion bash)\n"
      "zsh: source <(oxcontacts completion zsh)\n"
      "fish: oxcontacts completion fish | source");
  completion->callback([shell] {
    std::cout << (*shell == "bash" ? kBash : *shell == "zsh" ? kZsh : kFish);
  });
}

void answerShell(const CLI::App& program, int argc, const char* const* argv) {
  Words words;
  for (int i = 2; i < argc; ++i) words.push_back(plain(argv[i]));
  if (!words.empty() && words.front() == "--") words.erase(words.begin());
  if (words.empty()) words.emplace_back();
  printAnswers(program, words);
}

}  // namespace ox::program
