#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tests/kills/allowed_states.hpp"
#include "tests/support/second_process.hpp"

namespace ox::kills {

// A command of the program that writes, for the book of fillAddressBook.
struct Act {
  using Words = std::vector<std::string>;

  const char* name;
  Words arguments;  // "@..." is a file of the test's folder, "oldest copy" is one
  // What it says when it has done it; empty when its end alone says it.
  std::string told;
  // Commands that do a part of it, where it is no one act: the whole batches of an import.
  std::vector<Words> parts = {};
  // A file that it writes.
  std::string output = {};
  // A command that comes before it.
  Words before = {};

  std::vector<std::string> command() const;
};

std::ostream& operator<<(std::ostream& stream, const Act& act);

const std::vector<Act>& writingCommands();

// Fills the store for the act.
void prepareFor(const Act& act);
// The same for a store that fillAddressBook has filled.
void prepareAlsoFor(const Act& act);

// The state before the act, after each of its parts, and after it; the act is run for that, and the
// files are as they were. Both arguments must outlive the result.
AllowedStates statesOf(const Act& act, const Identifiers& known);

// Expects that a run of the act that was cut off has left one of the states; the last one if it
// said so; and that nobody has to help by hand: whoever asks once more gets the whole.
void expectLeftWhole(const Act& act, const AllowedStates& states,
                     const support::ProcessResult& result);

}  // namespace ox::kills
