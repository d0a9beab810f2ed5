#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;
using support::temporaryPath;

std::string peopleNow() {
  std::string names;
  for (const auto& [name, id] : personIds()) names += name + " ";
  return names;
}

TEST(Arguments, InBracketsAreOneWord) {
  for (const auto* name : {"Ann", "Bob", "[Ann,Bob]"}) {
    run({"add-person", "_local", std::string("name.first=") + name});
  }
  run({"add-group", "_local", "[G]"});
  EXPECT_EQ(run({"group-add", "[G]", "[Ann,Bob]"}).errors, "oxcontacts: added 1 person to [G]\n");
  EXPECT_EQ(runJson({"tag", "[Ann,Bob]", "--add", "[a,b]", "--add=[c]"}),
            Json::array({"[a,b]", "[c]"}));
  EXPECT_EQ(runJson({"persons", "--tag=[a,b]"}).size(), 1U);
  EXPECT_EQ(runJson({"tag", "[Ann,Bob]", "--remove", "[a,b]"}), Json::array({"[c]"}));
  const auto cards = run({"export", "[Ann,Bob]"}).output;
  EXPECT_NE(cards.find("[Ann"), std::string::npos);
  EXPECT_EQ(cards.find("BEGIN:VCARD", 1), std::string::npos);
  EXPECT_EQ(runJson({"copy", "[Ann,Bob]", "--to", "_local"}).size(), 1U);
  EXPECT_EQ(run({"group-remove", "[G]", "[Nobody,Ann]"}).exitCode, 4);
  EXPECT_EQ(run({"remove-person", "[Ann,Bob,Cy]"}).exitCode, 4);
  const auto file = temporaryFile("[a,b]", card({"N:;Dee;;;", "FN:Dee"})).string();
  EXPECT_EQ(run({"import", file}).exitCode, 0);
  EXPECT_EQ(peopleNow(), "Ann Bob Dee [Ann,Bob] ");
  EXPECT_EQ(run({"set", "Ann", "note=[x]", "company=y\x01"}).exitCode, 0);
  EXPECT_EQ(runJson({"show", "Ann"})["properties"][1]["value"], "y\x01");
  EXPECT_EQ(run({"remove-person", "Ann", "Bob"}).exitCode, 0);
  EXPECT_EQ(peopleNow(), "Dee [Ann,Bob] ");
}

TEST(Arguments, ThatAreEmptyAreRefused) {
  run({"add-person", "_local", "name=Ann"});
  const auto good = temporaryFile("good.vcf", card({"N:;Ben;;;", "FN:Ben"})).string();
  const std::vector<std::vector<std::string>> rows = {
      {"--store", "", "persons"},
      {"persons", "--book", ""},
      {"persons", "--book="},
      {"persons", "--group", ""},
      {"persons", "--tag", ""},
      {"persons", "--find", ""},
      {"persons", "--limit", ""},
      {"groups", "--book", ""},
      {"show", ""},
      {"export", ""},
      {"export", "--book", ""},
      {"export", "-o", ""},
      {"import", ""},
      {"import", good, "--into", ""},
      {"import", good, "--report", ""},
      {"photo", "Ann", "--set", ""},
      {"photo", "Ann", "--get", ""},
      {"tag", "Ann", "--add", ""},
      {"add-person", ""},
      {"set", "Ann", ""},
      {"copy", "Ann", "--to", ""},
      {"add-group", "_local", ""},
      {"add-group", "_local", "G", "--under", ""},
      {"accounts", "add", ""},
      {"accounts", "add", "X", "--identifier", ""},
      {"accounts", "remove", ""},
  };
  for (const auto& row : rows) {
    const auto result = run(row);
    EXPECT_EQ(result.exitCode, 2) << Json(row) << result.errors;
    EXPECT_NE(result.errors.find("must not be empty"), std::string::npos) << result.errors;
    EXPECT_EQ(result.output, "") << Json(row);
  }
  EXPECT_EQ(peopleNow(), "Ann ");
  EXPECT_EQ(runJson({"groups"}), Json::array());
  EXPECT_EQ(runJson({"accounts"}).size(), 1U);
}

TEST(Arguments, AFlagTakesNoEmptyValue) {
  for (const auto* word : {"--json=", "--quiet=", "--help="}) {
    const auto result = run({word, "accounts"});
    EXPECT_EQ(result.exitCode, 2) << word;
    EXPECT_EQ(result.output, "") << word;
    EXPECT_EQ(result.errors.find('\x01'), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("must not be empty"), std::string::npos) << result.errors;
  }
  makeStore();
  EXPECT_EQ(run({"--json", "--quiet", "accounts"}).exitCode, 0);
}

TEST(Arguments, NoCommandIsMadeUp) {
  const auto store = temporaryPath("never.db").string();
  struct Row {
    std::vector<std::string> arguments;
    const char* message;
  };
  const std::vector<Row> rows = {
      {{}, "no command is given; `oxcontacts --help` lists the commands"},
      {{"fly"}, "there is no command \"fly\"; `oxcontacts --help` lists the commands"},
      {{"[fly]", "away"}, "there is no command \"[fly]\"; `oxcontacts --help` lists the commands"},
      {{"--fly"}, "there is no option \"--fly\"; `oxcontacts --help` lists the commands"},
      {{"show", "a", "b]", "--fly"},
       R"("b]" "--fly" was not expected; `oxcontacts show --help` says what is)"},
      {{"accounts", "fly"}, "\"fly\" was not expected; `oxcontacts accounts --help` says what is"},
  };
  for (auto row : rows) {
    row.arguments.insert(row.arguments.begin(), {"--store", store});
    const auto result = run(row.arguments);
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.errors, std::string("oxcontacts: ") + row.message + "\n");
    EXPECT_EQ(result.output, "");
  }
  EXPECT_FALSE(std::filesystem::exists(store));
  EXPECT_EQ(runJson({"accounts", "add", "remove"})["name"], "remove");
}

TEST(Arguments, ALimitIsANumber) {
  for (const auto* limit : {"-1", "99999999999999999999999", "1x", "0x10", " 1", "+1"}) {
    const auto result = run({"persons", "--limit", limit});
    EXPECT_EQ(result.exitCode, 2) << limit;
    EXPECT_EQ(result.output, "") << limit;
  }
  for (const auto* name : {"name=Ann", "name=Ben"}) run({"add-person", "_local", name});
  EXPECT_EQ(runJson({"persons", "--limit", "0"}).size(), 0U);
  EXPECT_EQ(runJson({"persons", "--limit", "01"}).size(), 1U);
  EXPECT_EQ(runJson({"persons", "--limit", "18446744073709551615"}).size(), 2U);
}

}  // namespace
}  // namespace ox::program_tests
