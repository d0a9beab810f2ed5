// help, --version, what is said of a wrong command line, and of a store that is not there.
#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(HelpCommand, SaysWhatTheOptionSays) {
  for (const auto* command : {"persons", "merge", "import", "undo"}) {
    const auto help = run({"help", command});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.errors, "");
    EXPECT_EQ(help.output, run({command, "--help"}).output) << command;
    EXPECT_TRUE(holds(help.output, std::string("Usage: oxcontacts ") + command)) << help.output;
  }
  EXPECT_EQ(run({"help"}).output, run({"--help"}).output);
  EXPECT_EQ(run({"help", "ls"}).output, run({"persons", "--help"}).output);
  EXPECT_TRUE(holds(run({"help", "accounts", "add"}).output, "NAME"));
  const auto unknown = run({"help", "nosuch"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_EQ(unknown.errors,
            "oxcontacts: there is no command \"nosuch\"; `oxcontacts help` lists the commands\n");
}

TEST(Help, ShowsTheCommandsInTheirRooms) {
  const auto help = run({"--help"}).output;
  std::size_t last = 0;
  for (const auto* room : {"\nLook:\n", "\nChange:\n", "\nCarry to and from files:\n",
                           "\nKeep safe:\n", "\nHelp:\n"}) {
    const auto at = help.find(room);
    ASSERT_NE(at, std::string::npos) << room;
    EXPECT_GT(at, last);
    last = at;
  }
  EXPECT_FALSE(holds(help, "\nSubcommands:\n"));
}

TEST(Version, IsPrinted) {
  const auto version = run({"--version"});
  EXPECT_EQ(version.exitCode, 0);
  constexpr std::string_view kFront = "oxcontacts ";
  ASSERT_TRUE(version.output.starts_with(kFront) && version.output.ends_with('\n'));
  const auto number =
      version.output.substr(kFront.size(), version.output.size() - 1 - kFront.size());
  EXPECT_EQ(std::ranges::count(number, '.'), 2) << number;
  EXPECT_EQ(number.find_first_not_of("0123456789."), std::string::npos) << number;
}

TEST(UsageErrors, HaveOneVoice) {
  makeStore();
  for (const auto& words : std::vector<std::vector<std::string>>{{"show"},
                                                                 {"show", "--nosuch"},
                                                                 {"show", "a", "b"},
                                                                 {"persons", "--sort", "size"},
                                                                 {"persons", "--limit", "x"},
                                                                 {"nosuch"},
                                                                 {},
                                                                 {"birthdays", "--days", "x"},
                                                                 {"--color", "blue", "persons"}}) {
    const auto result = run(words);
    EXPECT_EQ(result.exitCode, 2) << Json(words);
    EXPECT_EQ(result.output, "") << Json(words);
    EXPECT_TRUE(result.errors.starts_with("oxcontacts: ")) << result.errors;
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 1) << result.errors;
  }
  EXPECT_EQ(run({"show"}).errors,
            "oxcontacts: PERSON is required; `oxcontacts show --help` says more\n");
}

TEST(MissingStore, IsToldAndNotMadeByCommandsThatCannotFillIt) {
  const auto path = support::temporaryPath("mistyped.db").string();
  for (const auto& words : std::vector<std::vector<std::string>>{{"persons"},
                                                                 {"show", "x"},
                                                                 {"groups"},
                                                                 {"books"},
                                                                 {"accounts"},
                                                                 {"find", "x"},
                                                                 {"mail", "x"},
                                                                 {"birthdays"},
                                                                 {"export"},
                                                                 {"page"},
                                                                 {"log"},
                                                                 {"trash"},
                                                                 {"undo"},
                                                                 {"set", "x", "note=y"},
                                                                 {"tag", "x"},
                                                                 {"edit", "x"},
                                                                 {"backup", "_local", "x"},
                                                                 {"accounts", "remove", "x"}}) {
    auto arguments = words;
    arguments.insert(arguments.begin(), {"--store", path});
    const auto result = run(arguments);
    EXPECT_EQ(result.exitCode, 1) << Json(words);
    EXPECT_EQ(result.errors, "oxcontacts: there is no contact store at " + path +
                                 "; `import`, `accounts add` and `add-person` make one\n");
    EXPECT_EQ(result.output, "");
    EXPECT_FALSE(std::filesystem::exists(path)) << Json(words);
  }
  EXPECT_EQ(run({"--store", path, "add-person", "_local", "name=Ann"}).exitCode, 0);
  EXPECT_EQ(run({"--store", path, "persons"}).exitCode, 0);
}

TEST(RmCommand, IsShortForRemovePerson) {
  run({"add-person", "_local", "name=Ann"});
  EXPECT_EQ(run({"rm", "Ann"}).exitCode, 0);
  EXPECT_EQ(runJson({"persons"}).size(), 0U);
}

}  // namespace
}  // namespace ox::program_tests
