#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/oxcontacts/on_a_terminal.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

// Four in the local book, one of the same name in the book Work; a group in each.
void fillStore() {
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  const auto local = temporaryFile(
      "local.vcf",
      card({"UID:1", "N:Lee;Ann;;;", "FN:Ann Lee", "TEL:+49 30 1234567"}) +
          card({"UID:2", "N:Lee;Anna;;;", "FN:Anna Lee", "NICKNAME:Queen"}) +
          card({"UID:3", "N:M\u00FCller;J\u00FCrgen;;;", "FN:J\u00FCrgen M\u00FCller",
                "ADR:;;;K\u00F6ln;;;"}) +
          card({"UID:4", "N:\u738B;\u5C0F\u660E;;;", "FN:\u738B\u5C0F\u660E",
                "EMAIL:ming@example.org"}) +
          card({"UID:5", "FN:Old Friends", "N:Old Friends;;;;", "X-ADDRESSBOOKSERVER-KIND:group",
                "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:1"}));
  ASSERT_EQ(run({"import", local}).exitCode, 0);
  const auto work = temporaryFile(
      "work.vcf",
      card({"UID:6", "N:Lee;Ann;;;", "FN:Ann Lee", "TEL:030 7654321"}) +
          card({"UID:7", "FN:New Friends", "N:New Friends;;;;", "X-ADDRESSBOOKSERVER-KIND:group",
                "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:6"}));
  ASSERT_EQ(run({"import", work, "--into", "Work"}).exitCode, 0);
}

std::string uidOf(const std::string& text) {
  const auto shown = runJson({"show", text});
  if (!shown.is_object()) return shown.dump();
  return shown["addressBookID"].get<std::string>() + " " + shown["displayName"].get<std::string>();
}

TEST(Naming, TakesAPersonByWhatIsTypedOfTheName) {
  fillStore();
  const struct {
    const char* typed;
    const char* meant;
  } rows[] = {
      {"Anna Lee", "_local Anna Lee"},
      {"lee anna", "_local Anna Lee"},
      {"ANNA", "_local Anna Lee"},
      {"queen", "_local Anna Lee"},
      {"mueller", "_local Jürgen Müller"},
      {"jurgen", "_local Jürgen Müller"},
      {"xiao ming", "_local 王小明"},
      {"wangxiaoming", "_local 王小明"},
      {"Work/Ann Lee", "W Ann Lee"},
      {"Work/ann", "W Ann Lee"},
      {"On My Mac/Ann Lee", "_local Ann Lee"},
  };
  for (const auto& row : rows) EXPECT_EQ(uidOf(row.typed), row.meant) << row.typed;
}

TEST(Naming, TakesAnIdWithoutItsEndingAndItsBeginning) {
  fillStore();
  const auto id = runJson({"show", "mueller"})["ID"].get<std::string>();
  const auto bare = id.substr(0, id.find(':'));
  for (const auto& typed : {id, bare, id.substr(0, 18), bare.substr(0, 30)}) {
    EXPECT_EQ(runJson({"show", typed})["ID"], id) << typed;
  }
  std::string lower = id.substr(0, 18);
  for (auto& c : lower) c = static_cast<char>(std::tolower(c));
  EXPECT_EQ(runJson({"show", lower})["ID"], id);
  EXPECT_EQ(run({"show", "FFFFFFFF-0000"}).exitCode, 4);
  EXPECT_EQ(run({"show", id.substr(0, 8)}).exitCode, 2);
}

TEST(Naming, LooksInTheNamedBookAlone) {
  fillStore();
  const auto work = runJson({"show", "Ann Lee", "--book", "Work"});
  EXPECT_EQ(work["displayName"], "Ann Lee");
  EXPECT_EQ(runJson({"show", work["ID"], "--book", "Work"})["ID"], work["ID"]);
  EXPECT_EQ(runJson({"show", "Ann Lee", "--book", "_local"})["addressBookID"], "_local");
  EXPECT_EQ(run({"show", work["ID"], "--book", "_local"}).exitCode, 4);
  EXPECT_EQ(run({"show", "mueller", "--book", "Work"}).exitCode, 4);
  EXPECT_EQ(run({"show", "Ann Lee", "--book", "Nowhere"}).exitCode, 4);
  EXPECT_EQ(run({"tag", "Ann Lee", "--add", "here", "--book", "Work"}).exitCode, 0);
  EXPECT_EQ(runJson({"show", work["ID"]})["tags"], Json::array({"here"}));
  EXPECT_EQ(run({"group-add", "friends", "Ann Lee", "--book", "Work"}).exitCode, 0);
  const auto noUse = run({"--book", "Work", "accounts"});
  EXPECT_EQ(noUse.exitCode, 2);
  EXPECT_EQ(noUse.errors,
            "oxcontacts: `accounts` looks for nobody in a book; --book is of no use to it\n");
  EXPECT_EQ(run({"--book", "Work", "persons"}).exitCode, 2);
}

TEST(Naming, ListsThoseWhoMayBeMeant) {
  fillStore();
  const auto persons = runJson({"persons", "--sort", "store"});
  const auto shortOf = [&](std::size_t place) {
    return persons[place]["ID"].get<std::string>().substr(0, 18);
  };
  const auto result = run({"show", "Ann Lee"});
  EXPECT_EQ(result.exitCode, 2);
  EXPECT_EQ(result.errors,
            "oxcontacts: \"Ann Lee\" may be any of 2 persons; name one by its ID: "
            "Ann Lee (On My Mac, +49 30 1234567, " +
                shortOf(0) + "), Ann Lee (Work, 030 7654321, " + shortOf(4) + ")\n");
  EXPECT_EQ(run({"show", "lee"}).exitCode, 2);
  EXPECT_EQ(run({"show", "Work/Anna"}).exitCode, 4);
  EXPECT_EQ(run({"show", "nobody"}).errors, "oxcontacts: there is no person \"nobody\"\n");
}

TEST(Naming, TakesAGroupByWhatIsTypedOfItsName) {
  fillStore();
  EXPECT_EQ(run({"group-add", "friends", "mueller"}).exitCode, 2);
  EXPECT_EQ(run({"group-add", "old", "mueller"}).exitCode, 0);
  EXPECT_EQ(runJson({"persons", "--group", "FRIENDS old"}).size(), 2U);
  EXPECT_EQ(runJson({"persons", "--group", "Work/friends"}).size(), 1U);
  EXPECT_EQ(run({"persons", "--group", "foes"}).exitCode, 4);
}

// The exit code, and what the command writes on a terminal where somebody answers that.
std::string answeredOnATerminal(const std::vector<std::string>& arguments,
                                const std::string& answer) {
  const auto result =
      runOnATerminal(arguments, {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}, answer);
  return std::to_string(result.exitCode) + ": " + result.output;
}

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(Naming, AsksOnATerminalWhichOneIsMeant) {
  fillStore();
  const auto second = answeredOnATerminal({"show", "Ann Lee"}, "2\n");
  EXPECT_TRUE(holds(second, "Which person is \"Ann Lee\"?")) << second;
  EXPECT_TRUE(holds(second, "1  Ann Lee (On My Mac, +49 30 1234567, ")) << second;
  EXPECT_TRUE(holds(second, "030 7654321")) << second;
  EXPECT_TRUE(second.starts_with("0: ")) << second;
  for (const auto* answer : {"\n", "3\n", "x\n", "-1\n", "1-2\n"}) {
    EXPECT_TRUE(answeredOnATerminal({"show", "Ann Lee"}, answer).starts_with("2: ")) << answer;
  }
}

TEST(Naming, AsksOnATerminalBeforeSomebodyIsRemoved) {
  fillStore();
  const auto kept = answeredOnATerminal({"remove-person", "mueller"}, "n\n");
  EXPECT_TRUE(kept.starts_with("1: ")) << kept;
  EXPECT_TRUE(holds(kept, "Remove Jürgen Müller (")) << kept;
  EXPECT_EQ(uidOf("mueller"), "_local Jürgen Müller");
  EXPECT_TRUE(answeredOnATerminal({"remove-person", "mueller"}, "y\n").starts_with("0: "));
  EXPECT_EQ(run({"show", "mueller"}).exitCode, 4);
}

TEST(Naming, ForgetsNobodyByPartOfTheName) {
  fillStore();
  EXPECT_EQ(run({"forget", "mueller"}).exitCode, 4);
  EXPECT_EQ(run({"log", "mueller"}).exitCode, 4);
  EXPECT_EQ(uidOf("mueller"), "_local Jürgen Müller");
}

TEST(Naming, TakesWhatIsShownOfAnIdForThePastToo) {
  fillStore();
  const auto id = runJson({"show", "queen"})["ID"].get<std::string>();
  const auto shortId = id.substr(0, 18);
  EXPECT_EQ(run({"log", shortId}).exitCode, 0);
  EXPECT_EQ(run({"remove-person", shortId}).exitCode, 0);
  for (const auto& typed : {id, id.substr(0, 36), shortId}) {
    EXPECT_EQ(run({"log", typed}).exitCode, 0) << typed;
  }
  EXPECT_EQ(run({"forget", shortId}).exitCode, 0);
  EXPECT_EQ(run({"log", shortId}).exitCode, 4);
}

TEST(Naming, TakesSomebodyWithoutANameByTheCompany) {
  fillStore();
  run({"add-person", "On My Mac", "company=Acme Inc"});
  run({"add-person", "On My Mac", "name=Acme Inc Bob"});
  EXPECT_EQ(uidOf("Acme Inc"), "_local Acme Inc");
  for (const auto& person : runJson({"persons"})) {
    const auto code = run({"show", person["displayName"]}).exitCode;
    EXPECT_TRUE(code == 0 || (code == 2 && person["displayName"] == "Ann Lee"))
        << person["displayName"];
  }
}

TEST(PersonsCommand, FindsByWordsInAnyField) {
  fillStore();
  const auto namesFound = [](const std::vector<std::string>& options) {
    std::string names;
    for (const auto& person : runJson(options)) {
      names += (names.empty() ? "" : ", ") + person["displayName"].get<std::string>();
    }
    return names;
  };
  EXPECT_EQ(namesFound({"persons", "--find", "lee"}), "Ann Lee, Ann Lee, Anna Lee");
  EXPECT_EQ(namesFound({"persons", "--find", "lee", "--book", "Work"}), "Ann Lee");
  EXPECT_EQ(namesFound({"persons", "--find", "lee", "--group", "old friends"}), "Ann Lee");
  EXPECT_EQ(namesFound({"persons", "--find", "030 123 45"}), "Ann Lee");
  EXPECT_EQ(namesFound({"persons", "--find", "town:koeln"}), "Jürgen Müller");
  EXPECT_EQ(namesFound({"persons", "--find", "example.org wang"}), "王小明");
  const auto nobody = run({"persons", "--find", "zebra"});
  EXPECT_EQ(nobody.exitCode, 4);
  EXPECT_EQ(nobody.output, "");
  EXPECT_EQ(nobody.errors, "oxcontacts: nobody matches \"zebra\"\n");
  EXPECT_EQ(run({"persons", "--find", "\"\""}).exitCode, 4);
  EXPECT_EQ(run({"persons", "--find", "zebra", "--json"}).exitCode, 4);
  EXPECT_EQ(run({"persons", "--find", "lee", "--limit", "0"}).exitCode, 0);
  const auto noBook = run({"persons", "--find", "lee", "--json", "--book", "nowhere"});
  EXPECT_EQ(noBook.exitCode, 4);
  EXPECT_EQ(noBook.output, "");
}

}  // namespace
}  // namespace ox::program_tests
