#include "oxcontacts/arguments.hpp"

#include <utility>

namespace ox::program {
namespace {

constexpr char kMark = '\x01';

bool isOptionWithoutValue(const std::string& word) {
  return word.starts_with("--") && word.find('=') == word.size() - 1;
}

bool needsMark(const std::string& word) {
  return !word.empty() &&
         (word.back() == ']' || word.back() == kMark || isOptionWithoutValue(word));
}

}  // namespace

std::vector<std::string> parserWords(int argc, const char* const* argv) {
  std::vector<std::string> words;
  for (int i = argc - 1; i > 0; --i) {
    std::string word = argv[i];
    if (needsMark(word)) word += kMark;
    words.push_back(std::move(word));
  }
  return words;
}

std::string shellWord(std::string_view word) {
  const bool isPlain =
      !word.empty() && word.find_first_of(" \t\n\"'\\$`*?[]#~&|;<>()!") == std::string_view::npos;
  if (isPlain) return std::string(word);
  std::string quoted = "'";
  for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string commandLine(int argc, const char* const* argv) {
  constexpr std::size_t kLongest = 4096;
  std::string line;
  for (int i = 1; i < argc && line.size() < kLongest; ++i) {
    if (!line.empty()) line += ' ';
    line += shellWord(argv[i]);
  }
  if (line.size() > kLongest) line.resize(kLongest);
  return line;
}

std::string withoutMark(std::string word) {
  if (word.ends_with(kMark)) word.pop_back();
  return word;
}

void takeAsGiven(CLI::App& program) {
  for (auto* option : program.get_options()) {
    option->check([](const std::string& value) {
      return value.empty() ? std::string("must not be empty") : std::string();
    });
    option->transform(withoutMark);
  }
  for (auto* command : program.get_subcommands({})) takeAsGiven(*command);
}

std::string unknownCommand(const CLI::App& program) {
  const auto unknown = program.remaining();
  const std::string hint = "; `oxcontacts --help` lists the commands";
  if (unknown.empty()) return "no command is given" + hint;
  const auto word = withoutMark(unknown.front());
  return "there is no " + std::string(word.starts_with('-') ? "option" : "command") + " \"" + word +
         "\"" + hint;
}

std::string unexpectedWords(const CLI::App& program) {
  std::string words;
  for (const auto& word : program.remaining(true)) words += "\"" + withoutMark(word) + "\" ";
  return words + "was not expected; `oxcontacts " + program.get_subcommands().front()->get_name() +
         " --help` says what is";
}

}  // namespace ox::program
