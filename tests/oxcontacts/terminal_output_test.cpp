// Whatever a store or an argument holds, nothing of it steers the terminal that it is shown on.
#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <unistd.h>

#include "oxcontacts/output/terminal_text.hpp"
#include "tests/oxcontacts/on_a_terminal.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using program::terminalLines;
using support::temporaryFile;

// One of every kind.
const std::string kHostile = "\u0301x\x1B]0;t\x07\x9B\u009B31m\u202E\u2066\u200F\x7F\r y";

void expectSafe(const std::string& text, const std::string& command) {
  EXPECT_EQ(terminalLines(text), text) << command;
}

std::string quoted(const std::vector<std::string>& words) {
  std::string line;
  for (const auto& word : words) line += word + " ";
  return line;
}

// A store whose every text is hostile.
void fillStore() {
  const auto own = "A" + kHostile;
  const auto file = temporaryFile(
      "hostile.vcf",
      card({"UID:p" + kHostile, "N:" + own + ";" + own, "FN:" + own, "ORG:" + own + ";" + own,
            "TEL;TYPE=" + kHostile + ":" + kHostile, "item1.EMAIL:" + own, "item1.X-ABLabel:" + own,
            "NOTE:" + own, "ADR:;;" + own + ";" + own + ";;;",
            "X-SOCIALPROFILE;type=" + own + ":" + own, "IMPP;X-SERVICE-TYPE=" + own + ":x:" + own,
            "X-ODD:" + own, own, "BDAY:" + own}) +
          card({"UID:g" + kHostile, "N:" + own, "FN:" + own, "X-ADDRESSBOOKSERVER-KIND:group",
                "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:p" + kHostile,
                "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:gone" + kHostile}) +
          "stray " + own + "\r\nBEGIN:VCARD\r\n" + own + "\r\n");
  for (const auto& command :
       std::vector<std::vector<std::string>>{{"accounts", "add", own},
                                             {"import", file.string()},
                                             {"import", "--update", file.string()}}) {
    const auto result = run(command);
    expectSafe(result.output, quoted(command));
    expectSafe(result.errors, quoted(command));
  }
}

TEST(TerminalOutput, IsSafeWhateverTheStoreHolds) {
  fillStore();
  const auto persons = runJson({"persons"});
  ASSERT_EQ(persons.size(), 1U);
  const std::string id = persons[0]["ID"];
  ASSERT_EQ(run({"tag", id, "--add", "T" + kHostile}).exitCode, 0);
  ASSERT_EQ(run({"set", id, "phone:" + kHostile + "=" + kHostile}).exitCode, 0);
  for (const auto& command :
       std::vector<std::vector<std::string>>{{"accounts"},
                                             {"books"},
                                             {"persons"},
                                             {"show", id},
                                             {"groups"},
                                             {"tag", id},
                                             {"log"},
                                             {"log", id},
                                             {"check"},
                                             {"remove-person", id},
                                             {"trash"},
                                             {"show", id, "--at", "2000-01-01"},
                                             {"undo"}}) {
    for (const bool json : {false, true}) {
      auto words = command;
      if (json) words.insert(words.begin(), "--json");
      const auto result = run(words);
      expectSafe(result.output, quoted(words));
      expectSafe(result.errors, quoted(words));
    }
  }
}

TEST(TerminalOutput, IsSafeWhateverIsTyped) {
  fillStore();
  for (const auto& command :
       std::vector<std::vector<std::string>>{{kHostile},
                                             {"--" + kHostile},
                                             {"persons", kHostile},
                                             {"persons", "--limit", kHostile},
                                             {"persons", "--sort", kHostile},
                                             {"persons", "--" + kHostile + "=1"},
                                             {"--color", kHostile, "books"},
                                             {"show", kHostile},
                                             {"show", "x", "--at", kHostile},
                                             {"set", "x", kHostile},
                                             {"set", "x", kHostile + "=1"},
                                             {"tag", "x", "--add", kHostile, "--remove", kHostile},
                                             {"import", kHostile},
                                             {"import", "--into", kHostile, "/dev/null"},
                                             {"export", "-o", "/not there/" + kHostile},
                                             {"backup", kHostile, "/not there/" + kHostile},
                                             {"restore", kHostile, kHostile},
                                             {"--store", "/dev/null/" + kHostile, "books"}}) {
    for (const bool json : {false, true}) {
      auto words = command;
      if (json) words.insert(words.begin(), "--json");
      const auto result = run(words);
      EXPECT_NE(result.exitCode, 0) << quoted(words);
      expectSafe(result.output, quoted(words));
      expectSafe(result.errors, quoted(words));
    }
  }
}

TEST(TerminalOutput, OfCardsIsSafeOnATerminalAndExactElsewhere) {
  const std::string name = "A\u202Enn";
  const auto file = temporaryFile("one.vcf", card({"UID:a", "N:;" + name + ";;;", "FN:" + name}));
  ASSERT_EQ(run({"import", file.string()}).exitCode, 0);
  EXPECT_NE(run({"export"}).output.find("FN:" + name + "\r\n"), std::string::npos);
  const auto onTerminal = runOnATerminal({"export"}, {STDOUT_FILENO});
  EXPECT_EQ(onTerminal.exitCode, 0);
  const auto& shown = onTerminal.output;
  expectSafe(shown, "export");
  EXPECT_NE(shown.find("FN:A\uFFFDnn\n"), std::string::npos) << shown;
}

}  // namespace
}  // namespace ox::program_tests
