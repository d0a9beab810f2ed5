#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

// The commands and options as they are declared, which the help, the completion of shells and the
// man pages are made from. What is hidden is in none of them.

namespace ox::program {

// "oxcontacts accounts", as messages of the parser have it.
std::string pathOf(const CLI::App& command);
// The commands right below, in the order in which they are declared.
std::vector<const CLI::App*> commandsBelow(const CLI::App& command);
// What the command itself takes, groups of options included: positional words or the others.
std::vector<const CLI::Option*> positionalsOf(const CLI::App& command);
std::vector<const CLI::Option*> optionsOf(const CLI::App& command);

// What an option takes.
struct OptionValue {
  std::string name;                  // "FILE"; empty of a flag
  std::vector<std::string> choices;  // when it is one of a few words
};
OptionValue valueOf(const CLI::Option& option);

}  // namespace ox::program
