// How a list of persons looks: its order, its columns, and the width of the terminal.
#include <gtest/gtest.h>

#include "ox/base/text/display_width.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

void importCards(const std::string& cards) {
  ASSERT_EQ(run({"import", temporaryFile("cards.vcf", cards)}).exitCode, 0);
}

void importNames(const std::vector<std::pair<std::string, std::string>>& names) {
  std::string cards;
  for (const auto& [first, last] : names) {
    cards += card({"N:" + last + ";" + first + ";;;", "FN:" + first + " " + last});
  }
  importCards(cards);
}

// The first column, joined.
std::string namesListed(const std::string& shellWords) {
  const auto result = runShell(shellWords + " $OX persons --columns name --quiet " +
                               "$SORT | tail -n +2 | paste -sd,");
  return result.output.substr(0, result.output.find('\n'));
}

TEST(PersonsCommand, OrdersAsReadersOfTheUsersLanguageExpect) {
  importNames({{"Åsa", "Berg"}, {"Zoe", "Adam"}, {"Öl", "Zorn"}, {"anna", "Öhm"}, {"Bo", "öhm"}});
  EXPECT_EQ(namesListed("LC_ALL=C"), "anna Öhm,Åsa Berg,Bo öhm,Öl Zorn,Zoe Adam");
  EXPECT_EQ(namesListed("LC_ALL=sv_SE.UTF-8"), "anna Öhm,Bo öhm,Zoe Adam,Åsa Berg,Öl Zorn");
  EXPECT_EQ(namesListed("export LC_ALL=de_DE.UTF-8 SORT='--sort family';"),
            "Zoe Adam,Åsa Berg,anna Öhm,Bo öhm,Öl Zorn");
  EXPECT_EQ(namesListed("export SORT='--sort store';"),
            "Åsa Berg,Zoe Adam,Öl Zorn,anna Öhm,Bo öhm");
}

TEST(PersonsCommand, PutsACompanyWhereItsNameBelongsAmongFamilies) {
  importCards(card({"N:Young;Ann;;;", "FN:Ann Young"}) +
              card({"N:;;;;", "FN:Miller Ltd", "ORG:Miller Ltd"}) +
              card({"N:Lee;Bo;;;", "FN:Bo Lee"}));
  EXPECT_EQ(namesListed("export LC_ALL=C SORT='--sort family';"), "Bo Lee,Miller Ltd,Ann Young");
}

TEST(PersonsCommand, ShowsTheColumnsThatAreAskedFor) {
  importCards(card({"N:Lee;Ann;;;", "FN:Ann Lee", "TEL;TYPE=CELL,pref:+1 555 1", "TEL:+1 555 2",
                    "BDAY:1990-05-17", "ORG:Acme", "EMAIL:a@b.example", "EMAIL:c@d.example"}));
  run({"tag", "Ann Lee", "--add", "old friend", "--add", "work"});
  EXPECT_EQ(run({"persons", "--columns", "name,birthday,tags"}).output,
            "NAME     BIRTHDAY    TAGS\nAnn Lee  1990-05-17  old friend; work\n");
  EXPECT_EQ(run({"persons", "--columns", "phone,phones,company"}).output,
            "PHONE     PHONE               COMPANY\n+1 555 1  +1 555 1; +1 555 2  Acme\n");
  EXPECT_EQ(run({"persons", "--columns", "email"}).output, "E-MAIL\na@b.example\n");
  const auto unknown = run({"persons", "--columns", "name,shoesize"});
  EXPECT_EQ(unknown.exitCode, 2);
  EXPECT_NE(unknown.errors.find("there is no column \"shoesize\"; there are name, phone, email"),
            std::string::npos);
}

TEST(PersonsCommand, NamesSomebodyWithoutANameByTheId) {
  importCards(card({"N:;;;;", "FN;X-DERIVED=TRUE:?", "NOTE:x", "BDAY:1990-05-17"}));
  const auto id = personIds().at("").substr(0, 18);
  EXPECT_EQ(run({"persons", "--columns", "name"}).output, "NAME\n(" + id + ")\n");
  const auto birthdays = run({"birthdays", "--days", "366"}).output;
  EXPECT_NE(birthdays.find("(" + id + ")"), std::string::npos) << birthdays;
}

// Every line fits, whatever the script of its texts; numbers are whole.
TEST(PersonsCommand, FitsTheTerminal) {
  std::string cards;
  const std::string longName = "Maximiliane-Alexandra von der Hohenfels-Wolkenstein";
  for (const auto& name :
       {longName, std::string("王小明王小明王小明王小明王小明王小明"),
        std::string("\U0001F600\U0001F600 Smile and the world smiles with you")}) {
    cards += card({"N:" + name + ";;;;", "FN:" + name, "TEL:+49 30 1234567890123",
                   "EMAIL:a.very.long.address.of.somebody@subdomain.example.org"});
  }
  importCards(cards);
  for (const std::size_t columns : {40U, 80U, 200U}) {
    const auto output = runShell("COLUMNS=" + std::to_string(columns) + " $OX persons").output;
    std::istringstream lines(output);
    std::size_t count = 0;
    for (std::string line; std::getline(lines, line); ++count) {
      EXPECT_LE(displayWidth(line), columns) << line;
      const bool isHeading = count == 0;
      EXPECT_TRUE(isHeading || line.find("+49 30 1234567890123") != std::string::npos) << line;
    }
    EXPECT_EQ(count, 4U) << columns;
    EXPECT_EQ(output.find("ID") != std::string::npos, columns == 200) << output;
    EXPECT_EQ(output.find("BOOK") != std::string::npos, columns > 40) << output;
  }
  const auto whole = run({"persons"}).output;
  EXPECT_NE(whole.find(longName), std::string::npos);
  EXPECT_NE(whole.find("somebody@subdomain.example.org"), std::string::npos);
}

TEST(PersonsCommand, HeadsALongListWithTheLettersOfItsIndex) {
  std::vector<std::pair<std::string, std::string>> names;
  for (int i = 0; i < 30; ++i) names.emplace_back("Ann" + std::to_string(100 + i), "");
  for (int i = 0; i < 11; ++i) names.emplace_back("Bo" + std::to_string(100 + i), "");
  importNames(names);
  const auto listed = [](const std::string& options) {
    return runShell("COLUMNS=80 LC_ALL=C $OX persons --columns name " + options).output;
  };
  const auto output = listed("");
  EXPECT_TRUE(output.starts_with("NAME\nA\nAnn100\n")) << output;
  EXPECT_NE(output.find("Ann129\nB\nBo100\n"), std::string::npos) << output;
  EXPECT_EQ(listed("--sort store").find("\nA\n"), std::string::npos);
  EXPECT_EQ(listed("--limit 1"), "NAME\nAnn100\n");
  EXPECT_EQ(run({"persons", "--columns", "name"}).output.find("\nA\n"), std::string::npos);
}

TEST(FindCommand, FindsPersonsByTheWordsBehindIt) {
  importNames({{"Ann", "Lee"}, {"Anna", "Leeds"}, {"Bo", "Berg"}});
  EXPECT_EQ(run({"find", "lee", "ann", "--columns", "name"}).output, "NAME\nAnn Lee\nAnna Leeds\n");
  EXPECT_EQ(runJson({"find", "berg"}).size(), 1U);
  EXPECT_EQ(run({"find", "zebra"}).exitCode, 4);
  EXPECT_EQ(run({"find"}).exitCode, 2);
  EXPECT_EQ(run({"ls", "--columns", "name", "--limit", "1"}).output, "NAME\nAnn Lee\n");
}

}  // namespace
}  // namespace ox::program_tests
