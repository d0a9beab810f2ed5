#include "oxcontacts/output/terminal_text.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace ox::program {
namespace {

std::string repeated(std::string_view text, std::size_t count) {
  std::string all;
  for (std::size_t i = 0; i < count; ++i) all += text;
  return all;
}

struct Row {
  std::string text;
  std::string safe;
};

const std::vector<Row>& hostileTexts() {
  static const std::vector<Row> rows = {
      {"", ""},
      {"Ann ~é张\U0001F600", "Ann ~é张\U0001F600"},
      {"a\nb", "a b"},
      {"a\u2028b", "a b"},
      {"\x1B[2J", "\uFFFD[2J"},
      {"a\r\tb\x7F", "a\uFFFD\uFFFDb\uFFFD"},
      {"\u009B31m", "\uFFFD31m"},
      {"\u202Ecod.exe\u202C", "\uFFFDcod.exe\uFFFD"},
      {"a\u200Fb", "a\uFFFDb"},
      {"a\x9B\xFF", "a\uFFFD\uFFFD"},
      {"e\u0301", "e\u0301"},
      {"\u0301e", "\u25CC\u0301e"},
      {"a \u0301", "a \u25CC\u0301"},
      {"a\n\u0301", "a \u25CC\u0301"},
      {"\x1B\u0301", "\uFFFD\u0301"},
      {"e" + repeated("\u0301", 20) + "f", "e" + repeated("\u0301", 16) + "f"},
  };
  return rows;
}

TEST(TerminalText, LetsNothingSteerTheTerminal) {
  for (const auto& row : hostileTexts()) EXPECT_EQ(terminalText(row.text), row.safe) << row.safe;
}

TEST(TerminalText, KeepsTheLinesWhereTheyAreWanted) {
  EXPECT_EQ(terminalLines("a\n\x1B[1mb\n"), "a\n\uFFFD[1mb\n");
  EXPECT_EQ(terminalLines("\n\u0301"), "\n\u25CC\u0301");
}

TEST(TerminalText, EscapesInJsonWhatItWouldReplaceSoThatItReadsTheSame) {
  for (const auto& row : hostileTexts()) {
    const nlohmann::json json = {{"a " + row.text, {row.text}}};
    for (const int indent : {-1, 2}) {
      const auto dumped = json.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
      const auto safe = terminalJson(dumped);
      EXPECT_EQ(terminalLines(safe), safe) << safe;
      EXPECT_EQ(nlohmann::json::parse(safe), nlohmann::json::parse(dumped)) << safe;
    }
  }
  EXPECT_EQ(terminalJson("\"\u0301\u202E\u2028\U0001D165a\U0001D165\""),
            "\"\\u0301\\u202e\\u2028\U0001D165a\U0001D165\"");
  EXPECT_EQ(terminalJson("\"\U0001D165\""), "\"\\ud834\\udd65\"");
}

}  // namespace
}  // namespace ox::program
