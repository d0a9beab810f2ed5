#include <filesystem>
#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

// What is offered for the last word, joined.
std::string offered(std::vector<std::string> words) {
  words.insert(words.begin(), {"complete", "--"});
  const auto result = run(words);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.exitCode, 0);
  std::string all;
  std::istringstream lines(result.output);
  for (std::string line; std::getline(lines, line);) all += (all.empty() ? "" : "|") + line;
  return all;
}

TEST(Completion, OffersCommandsOptionsAndChoices) {
  EXPECT_EQ(offered({"per"}), "persons");
  EXPECT_EQ(offered({"help", "und"}), "undo");
  EXPECT_EQ(offered({"accounts", ""}), "add|remove");
  EXPECT_EQ(offered({"persons", "--so"}), "--sort");
  EXPECT_EQ(offered({"persons", "--sort", ""}), "family|name|pinyin|store");
  EXPECT_EQ(offered({"--color", "al"}), "always");
  EXPECT_EQ(offered({"import", ""}), ":files");
  EXPECT_EQ(offered({"export", "-o", "x"}), ":files");
  EXPECT_EQ(offered({"page", "--o"}), "--open|--output");
  EXPECT_EQ(offered({"set", "Ann", "job"}), "jobtitle=");
  EXPECT_EQ(offered({"nosuch", "x"}), "");
}

TEST(Completion, OffersTheNamesOfTheStore) {
  run({"accounts", "add", "Work"});
  run({"add-person", "_local", "name=Ann Lee"});
  run({"add-person", "_local", "name=Jürgen Müller"});
  run({"add-group", "_local", "Old friends"});
  run({"tag", "Ann Lee", "--add", "golf"});
  EXPECT_EQ(offered({"show", "an"}), "Ann Lee");
  EXPECT_EQ(offered({"show", "Ann\\ L"}), "Ann Lee");
  EXPECT_EQ(offered({"show", "'Ann L"}), "Ann Lee");
  EXPECT_EQ(offered({"show", "jur"}), "Jürgen Müller");
  EXPECT_EQ(offered({"merge", "Ann Lee", ""}), "Ann Lee|Jürgen Müller");
  EXPECT_EQ(offered({"group-add", "o"}), "Old friends");
  EXPECT_EQ(offered({"group-add", "Old friends", "ann"}), "Ann Lee");
  EXPECT_EQ(offered({"persons", "--book", ""}), "On My Mac|Work");
  EXPECT_EQ(offered({"page", "--book", "w"}), "Work");
  EXPECT_EQ(offered({"persons", "--tag", ""}), "golf");
}

TEST(Completion, MakesNoStore) {
  const auto path = support::temporaryPath("never.db").string();
  EXPECT_EQ(offered({"--store", path, "show", ""}), "");
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(Completion, WorksInBash) {
  run({"add-person", "_local", "name=Ann Lee"});
  const auto result = runShell(
      "bash -c 'oxcontacts() { \"$OX\" \"$@\"; }; source <(oxcontacts completion bash); "
      "COMP_WORDS=(oxcontacts show A); COMP_CWORD=2; _oxcontacts; printf \"%s\" "
      "\"${COMPREPLY[@]}\"'");
  EXPECT_EQ(result.output, "Ann\\ Lee") << result.errors;
  for (const auto* shell : {"zsh", "fish"}) {
    EXPECT_NE(run({"completion", shell}).output.find("oxcontacts complete -- "), std::string::npos);
  }
  EXPECT_EQ(run({"completion", "tcsh"}).exitCode, 2);
}

}  // namespace
}  // namespace ox::program_tests
