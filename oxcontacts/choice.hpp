#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "oxcontacts/find.hpp"

namespace ox::program {

// Which persons a command is about: those of a book, a group, with a tag, found by words; all of
// them where nothing is said.
struct Choice {
  std::string book;
  bool isConfigured = false;  // the book is that of the configuration, which nobody named now
  std::string group;
  std::shared_ptr<_ABGroup> inGroup;  // that group, once it is found
  std::string tag;
  std::optional<std::string> find;
};

// The options --book, --group, --tag and --find; the choice is borrowed for the run.
void declareChoice(CLI::App& command, Choice& choice);
// Words of the command line as what is to be found.
void declareWords(CLI::App& command, Choice& choice);

// Settles the book and finds the group, for which somebody may be asked: before anything is read of
// one moment.
void prepare(const Context& context, Choice& choice);
// In the order of the store, each with its book known; throws a CommandError (kNotFound) where the
// words find nobody.
Persons chosenPersons(const Context& context, const Choice& choice);

}  // namespace ox::program
