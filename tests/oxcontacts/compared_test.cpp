// docs/compared.md: what it says that this program does.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <regex>
#include <sstream>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

std::vector<std::string> commandsOfThePage() {
  std::ifstream page(std::filesystem::path(OX_DOCS) / "compared.md");
  std::vector<std::string> commands;
  for (std::string line; std::getline(page, line);) {
    const auto from = line.find("| `");
    if (!line.starts_with("| ") || from == std::string::npos) continue;
    const auto end = line.find("` |", from);
    commands.push_back(line.substr(from + 3, end - from - 3));
  }
  return commands;
}

// In the order of the page, on one store.
TEST(Compared, EveryCommandOfThePageDoesWhatItSays) {
  const auto cards = support::temporaryFile(
      "sample.vcf",
      card({"N:Lindqvist;Zoë;;;", "FN:Zoë Lindqvist", "TEL;TYPE=CELL:+46 70 123 45 67",
            "EMAIL:zoe@lindqvist.example", "BDAY:1990-05-17",
            "ADR;TYPE=HOME:;;Storgatan 3;Uppsala;;753 31;Sverige"}) +
          card({"N:王;小明;;;", "FN:王小明", "TEL:+86 138 0013 8000"}) +
          card({"N:Lindkvist;Z.;;;", "FN:Z. Lindkvist", "TEL:070-123 45 67"}));
  ASSERT_EQ(run({"import", cards}).exitCode, 0);
  ASSERT_EQ(run({"accounts", "add", "Work"}).exitCode, 0);
  const auto folder = std::filesystem::path(cards).parent_path().string();
  const auto commands = commandsOfThePage();
  EXPECT_GE(commands.size(), 30U);
  for (const auto& command : commands) {
    const auto at = command.find("oxcontacts ");
    ASSERT_NE(at, std::string::npos) << command;
    const auto script = "cd '" + folder + "' && " + command.substr(0, at) + "\"$OX\" " +
                        command.substr(at + std::string("oxcontacts ").size());
    const auto result = runShell(script);
    EXPECT_EQ(result.exitCode, 0) << command << "\n" << result.errors;
    EXPECT_NE(result.output + result.errors, "") << command;
  }
}

}  // namespace
}  // namespace ox::program_tests
