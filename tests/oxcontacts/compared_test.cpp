// docs/compared.md: what it says that this program does.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
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

// What some of them are for stands in what they print.
const std::map<std::string, std::string> kPrinted = {
    {"oxcontacts find lind zoë", "Zoë Lindqvist"},
    {"oxcontacts find zoe", "Zoë Lindqvist"},
    {"oxcontacts find 'wang xiaoming'", "王小明"},
    {"oxcontacts find 0701234567", "Zoë Lindqvist"},
    {"oxcontacts find town:uppsala", "Zoë Lindqvist"},
    {"oxcontacts persons --sort family", "王小明"},
    {"oxcontacts birthdays --days 366", "Zoë Lindqvist"},
    {"oxcontacts phones", "+46 70 123 45 67"},
    {"oxcontacts mail lindqvist", "zoe@lindqvist.example\tZoë Lindqvist"},
    {"oxcontacts show zoe --json", "\"displayName\": \"Zoë Lindqvist\""},
    {"oxcontacts page", "Zoë Lindqvist"},
    {"oxcontacts duplicates", "same number"},
    {"oxcontacts merge zoe wang --dry-run", "+86 138 0013 8000"},
    {"oxcontacts log", "oxcontacts undo (takes back 5)"},
    {"oxcontacts export --format vcard4", "VERSION:4.0"},
    {"oxcontacts export zoe", "X-OWN:kept"},
    {"oxcontacts export --format csv", "Zoë"},
    {"oxcontacts export --format ldif", "objectClass: inetOrgPerson"},
    {"oxcontacts export --format jscontact", "\"@type\":\"Card\""},
};

// In the order of the page, on one store.
TEST(Compared, EveryCommandOfThePageEndsWellAndPrintsWhatItIsFor) {
  const auto cards = support::temporaryFile(
      "sample.vcf",
      card({"N:Lindqvist;Zoë;;;", "FN:Zoë Lindqvist", "TEL;TYPE=CELL:+46 70 123 45 67",
            "EMAIL:zoe@lindqvist.example", "BDAY:1990-05-17", "X-OWN:kept",
            "ADR;TYPE=HOME:;;Storgatan 3;Uppsala;;753 31;Sverige"}) +
          card({"N:王;小明;;;", "FN:王小明", "TEL:+86 138 0013 8000"}) +
          card({"N:Lindkvist;Z.;;;", "FN:Z. Lindkvist", "TEL:070-123 45 67"}));
  ASSERT_EQ(run({"import", cards}).exitCode, 0);
  ASSERT_EQ(run({"accounts", "add", "Work"}).exitCode, 0);
  const auto folder = std::filesystem::path(cards).parent_path().string();
  const auto commands = commandsOfThePage();
  EXPECT_GE(commands.size(), 30U);
  std::size_t looked = 0;
  for (const auto& command : commands) {
    const auto at = command.find("oxcontacts ");
    ASSERT_NE(at, std::string::npos) << command;
    const auto script = "cd '" + folder + "' && " + command.substr(0, at) + "\"$OX\" " +
                        command.substr(at + std::string("oxcontacts ").size());
    const auto result = runShell(script);
    EXPECT_EQ(result.exitCode, 0) << command << "\n" << result.errors;
    EXPECT_NE(result.output + result.errors, "") << command;
    if (const auto printed = kPrinted.find(command); printed != kPrinted.end()) {
      ++looked;
      EXPECT_NE(result.output.find(printed->second), std::string::npos)
          << command << "\n"
          << result.output.substr(0, 2000) << result.errors;
    }
  }
  EXPECT_EQ(looked, kPrinted.size());
}

}  // namespace
}  // namespace ox::program_tests
