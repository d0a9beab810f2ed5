// The man pages: made of the same commands and options as the help and the completion.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using Names = std::set<std::string>;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> offered(std::vector<std::string> words, const std::string& last = "") {
  words.insert(words.begin(), {"complete", "--"});
  words.push_back(last);
  return linesOf(run(words).output);
}

// "--keep-days" and what else a text names so.
Names optionsIn(const std::string& text) {
  Names names;
  for (auto at = text.find("--"); at != std::string::npos; at = text.find("--", at + 2)) {
    const bool isWithin = at > 0 && (text[at - 1] == '-' || std::isalnum(text[at - 1]) != 0);
    const auto end = text.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at + 2);
    if (!isWithin && end > at + 2) names.insert(text.substr(at, end - at));
  }
  return names;
}

std::string manFolder() {
  auto folder = support::temporaryPath("man").string();
  const auto result = run({"help", "--man", folder});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "");
  return folder;
}

// As a reader sees the page, on wide paper; bold letters are printed twice over.
std::string shown(const std::string& page) {
  const auto result =
      support::runProcess({"/usr/bin/env", "mandoc", "-T", "ascii", "-O", "width=1000", page});
  EXPECT_EQ(result.errors, "");
  std::string text;
  for (const char c : result.output) {
    if (c == '\b' && !text.empty()) {
      text.pop_back();
    } else {
      text += c;
    }
  }
  return text;
}

const std::vector<std::vector<std::string>>& allCommands() {
  static const auto& commands = *[] {
    auto* all = new std::vector<std::vector<std::string>>;
    for (const auto& command : offered({})) {
      all->push_back({command});
      if (command != "accounts" && command != "copies") continue;
      for (const auto& below : offered({command})) all->push_back({command, below});
    }
    return all;
  }();
  return commands;
}

std::string pageOf(const std::string& folder, const std::string& command) {
  return folder + "/oxcontacts-" + command + ".1";
}

TEST(ManPages, AreWellFormed) {
  const auto folder = manFolder();
  const auto lint =
      support::runProcess({"/bin/sh", "-c", "mandoc -T lint -W warning '" + folder + "'/*.1"});
  EXPECT_EQ(lint.output, "");
  EXPECT_EQ(lint.exitCode, 0);
}

TEST(ManPages, AreThoseOfTheCommandsAndOfNothingElse) {
  const auto folder = manFolder();
  Names expected{"oxcontacts.1"};
  for (const auto& command : offered({})) expected.insert("oxcontacts-" + command + ".1");
  EXPECT_GT(expected.size(), 35U);
  Names found;
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    found.insert(file.path().filename().string());
  }
  EXPECT_EQ(found, expected);
  const auto program = shown(folder + "/oxcontacts.1");
  for (const auto& command : offered({})) {
    EXPECT_NE(program.find("oxcontacts-" + command + "(1)"), std::string::npos) << command;
  }
}

TEST(ManPages, NameEveryOptionThatTheHelpNames) {
  const auto folder = manFolder();
  for (const auto& command : allCommands()) {
    auto words = command;
    words.insert(words.begin(), "help");
    const auto help = optionsIn(run(words).output);
    EXPECT_TRUE(help.contains("--help")) << Json(command);
    const auto page = optionsIn(shown(pageOf(folder, command.front())));
    EXPECT_TRUE(std::ranges::includes(page, help)) << Json(command) << Json(help) << Json(page);
  }
  const auto program = optionsIn(shown(folder + "/oxcontacts.1"));
  EXPECT_TRUE(std::ranges::includes(program, optionsIn(run({"help"}).output))) << Json(program);
}

TEST(ManPages, AgreeWithTheCompletion) {
  const auto folder = manFolder();
  const auto everywhere = optionsIn(shown(folder + "/oxcontacts.1"));
  for (const auto& command : allCommands()) {
    auto named = optionsIn(shown(pageOf(folder, command.front())));
    named.insert(everywhere.begin(), everywhere.end());
    const auto answers = offered(command, "--");
    EXPECT_TRUE(answers.size() > 5) << Json(command);
    for (const auto& option : answers) {
      EXPECT_TRUE(named.contains(option)) << Json(command) << option;
    }
  }
  const auto photo = offered({"photo", "Ann"}, "--");
  for (const auto* option : {"--set", "--get", "--clear"}) {
    EXPECT_EQ(std::ranges::count(photo, option), 1) << option;
  }
}

TEST(ManPages, GiveExamplesOfOptionsThatThereAre) {
  const auto folder = manFolder();
  for (const auto& command : offered({})) {
    const auto page = shown(pageOf(folder, command));
    const auto start = page.find("\nEXAMPLES\n");
    ASSERT_NE(start, std::string::npos) << command;
    std::size_t examples = 0;
    for (const auto& line : linesOf(page.substr(start, page.find("\nSEE ALSO\n") - start))) {
      const auto at = line.find_first_not_of(' ');
      if (at == std::string::npos || !line.substr(at).starts_with("oxcontacts ")) continue;
      ++examples;
      std::istringstream words(line.substr(at));
      std::string program;
      std::string name;
      words >> program >> name;
      EXPECT_EQ(std::ranges::count(offered({}, name), name), 1) << line;
      const auto known = offered({name, ""}, "--");
      for (const auto& option : optionsIn(line)) {
        EXPECT_TRUE(std::ranges::count(known, option) == 1 || name == "accounts") << line;
      }
    }
    EXPECT_GE(examples, 1U) << command;
  }
}

TEST(ManPages, TellOfFilesVariablesAndExitCodes) {
  const auto folder = manFolder();
  const auto page = shown(folder + "/oxcontacts.1");
  for (const auto* text :
       {"\nENVIRONMENT\n", "OX_CONTACT_STORE", "\nFILES\n", "~/.local/share/oxcontacts/contacts.db",
        "\nEXIT STATUS\n", "done with refusals", "130"}) {
    EXPECT_NE(page.find(text), std::string::npos) << text;
  }
  // What looks like more than text is text.
  const auto set = shown(pageOf(folder, "set"));
  EXPECT_NE(set.find("phone+:Boat=... one more with a label"), std::string::npos) << set;
  EXPECT_NE(
      shown(pageOf(folder, "mail")).find("mutt: set query_command = \"oxcontacts mail '%s'\""),
      std::string::npos);
}

TEST(ManPages, BearTheDayThatABuildIsToldToBeOf) {
  const auto folder = support::temporaryPath("man").string();
  const auto result = support::runProcess(programCommand({"help", "--man", folder}), "",
                                          {"SOURCE_DATE_EPOCH=1798761599"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_TRUE(support::fileBytes(folder + "/oxcontacts.1").starts_with(".Dd December 31, 2026\n"));
}

}  // namespace
}  // namespace ox::program_tests
