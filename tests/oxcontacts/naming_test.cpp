#include <gtest/gtest.h>

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

TEST(Naming, ListsThoseWhoMayBeMeant) {
  fillStore();
  const auto persons = runJson({"persons"});
  const auto shortOf = [&](int place) {
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

TEST(Naming, ForgetsNobodyByPartOfTheName) {
  fillStore();
  EXPECT_EQ(run({"forget", "mueller"}).exitCode, 4);
  EXPECT_EQ(uidOf("mueller"), "_local Jürgen Müller");
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
  EXPECT_EQ(namesFound({"persons", "--find", "lee"}), "Ann Lee, Anna Lee, Ann Lee");
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
  EXPECT_EQ(run({"persons", "--find", "zebra", "--json"}).output, "[]\n");
}

}  // namespace
}  // namespace ox::program_tests
