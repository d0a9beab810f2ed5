#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace ox::program {

// The parser takes an argument "[a,b]" for two and "--option=" for an option whose value follows.
// Here every argument is one, the empty one included.

// The words of the command line, marked where the parser would not take them as they stand and in
// the order in which it wants them: the last one first.
std::vector<std::string> parserWords(int argc, const char* const* argv);
// A word as the user could have typed it to a shell, and all of them, for the journal; of a very
// long line the beginning.
std::string shellWord(std::string_view word);
std::string commandLine(int argc, const char* const* argv);
// Without the mark, for a message.
std::string withoutMark(std::string word);
// Takes the marks away before an option sees its value, and refuses empty values: what was given
// and is empty must not pass for what was not given. For when every command is declared.
void takeAsGiven(CLI::App& program);

// What the user is told when the command line names no command, or one that there is not; and when
// the command has no use for words of it.
std::string unknownCommand(const CLI::App& program);
std::string unexpectedWords(const CLI::App& program);

}  // namespace ox::program
