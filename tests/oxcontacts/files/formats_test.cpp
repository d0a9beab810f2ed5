#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

// Formats beside vCard, from the command line.

namespace ox::program_tests {
namespace {

using support::fileBytes;
using support::temporaryFile;
using support::temporaryPath;

const std::string kCards =
    card({"UID:a1", "N:Lee;Ann;;;", "FN:Ann Lee", "TEL;TYPE=HOME:+1 555 1", "EMAIL:a@x.org",
          "item1.URL:http://x.org", "item1.X-ABLabel:Boat", "X-UNKNOWN;P=1:kept", "NOTE:one\\ntwo",
          "BDAY:1990-05-17", "PHOTO;ENCODING=b;TYPE=JPEG:/9j/4A=="}) +
    card({"UID:b1", "N:王;小明;;;", "FN:王小明", "EMAIL:b@x.org"}) +
    card({"UID:g1", "FN:Friends", "N:Friends;;;;", "X-ADDRESSBOOKSERVER-KIND:group",
          "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a1"});

void importCards() {
  ASSERT_EQ(run({"import", temporaryFile("cards.vcf", kCards)}).exitCode, 0);
}

std::string exported(const std::string& format) {
  auto path = temporaryPath("out." + format).string();
  EXPECT_EQ(run({"export", "--format", format, "-o", path}).exitCode, 0);
  return path;
}

// The cards of everybody in another store, into which that file was imported.
std::string cardsAfterImport(const std::string& file, const std::string& store) {
  const auto path = temporaryPath(store).string();
  EXPECT_EQ(run({"--store", path, "import", file}).exitCode, 0);
  return run({"--store", path, "export"}).output;
}

TEST(FormatsCommand, WriteJCardAndJsContactAsOneList) {
  importCards();
  const auto jcard = Json::parse(fileBytes(exported("jcard")));
  ASSERT_EQ(jcard.size(), 3U);
  EXPECT_EQ(jcard[0][1][1].dump(), R"(["n",{},"text",["Lee","Ann","","",""]])");
  EXPECT_EQ(jcard[1][1][2].dump(), R"(["fn",{},"text","王小明"])");
  const auto contacts = Json::parse(fileBytes(exported("jscontact")));
  ASSERT_EQ(contacts.size(), 3U);
  EXPECT_EQ(contacts[0]["uid"], "a1");
  EXPECT_EQ(contacts[0]["links"]["l1"].dump(), R"({"uri":"http://x.org","label":"Boat"})");
  EXPECT_EQ(contacts[0]["vCardProps"].dump(), R"([["x-unknown",{"p":"1"},"unknown","kept"]])");
  EXPECT_EQ(contacts[2]["members"].dump(), R"({"a1":true})");
}

TEST(FormatsCommand, WriteNamedPersonsAndNobody) {
  importCards();
  ASSERT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(run({"export", "--format", "jcard"}).output, "[]\n");
  EXPECT_EQ(run({"export", "--format", "ldif"}).output, "version: 1\n");
  importCards();
  EXPECT_EQ(Json::parse(run({"export", "--format", "jscontact", "Ann Lee"}).output).size(), 1U);
  EXPECT_EQ(run({"export", "--format", "ldif", "Nobody"}).exitCode, 4);
  EXPECT_EQ(run({"export", "--format", "csv", "Ann Lee"}).output,
            run({"export", "--format", "csv", "Ann Lee", "-o", "/dev/stdout"}).output);
}

TEST(FormatsCommand, SayThatATableHasNoGroups) {
  importCards();
  const auto path = temporaryPath("out.csv").string();
  EXPECT_EQ(run({"export", "--format", "csv", "-o", path}).errors,
            "oxcontacts: a table has no groups: 1 group left out\n"
            "oxcontacts: exported 2 persons and 0 groups to " +
                path + "\n");
}

TEST(FormatsCommand, GiveATableBackAsItWas) {
  importCards();
  const auto file = exported("csv");
  EXPECT_EQ(countsOf(runJson({"import", file})), "cards 2, skipped 2");
  auto cards = cardsAfterImport(file, "other.db");
  EXPECT_NE(cards.find("item1.URL:http://x.org\r\nitem1.X-ABLabel:Boat\r\n"), std::string::npos);
  const auto other = temporaryPath("other.db").string();
  EXPECT_EQ(run({"--store", other, "export", "--format", "csv"}).output, fileBytes(file));
}

TEST(FormatsCommand, UpdateWhatATableNamesAndNothingElse) {
  importCards();
  const auto before = run({"export"}).output;
  auto expected = before;
  const std::string number = "+1 555 1";
  expected.replace(expected.find(number), number.size(), "+1 555 2");
  const std::string email = "EMAIL:b@x.org\r\n";
  expected.erase(expected.find(email), email.size());
  const auto file = temporaryFile("some.csv",
                                  "UID,Email 1 - Value,Phone 1 - Label,Phone 1 - Value\n"
                                  "a1,a@x.org,Home,+1 555 2\nb1,,,\n")
                        .string();
  EXPECT_EQ(countsOf(runJson({"import", file})), "cards 2, skipped 2");
  EXPECT_EQ(run({"export"}).output, before);
  EXPECT_EQ(countsOf(runJson({"import", "--update", file})), "cards 2, updated 2");
  EXPECT_EQ(run({"export"}).output, expected);
  EXPECT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(run({"export"}).output, before);
}

TEST(FormatsCommand, LeaveAnAddressWithWhatOnlyItsCardKnows) {
  const auto cards = temporaryFile(
      "cards.vcf",
      card({"UID:a1", "N:Lee;Ann;;;", "FN:Ann Lee", "item1.ADR;TYPE=WORK:;;S 1;C;;1;Germany",
            "item1.X-ABADR:de", "item1.LABEL;TYPE=WORK:Formatted\\nText"}));
  ASSERT_EQ(run({"import", cards}).exitCode, 0);
  const auto before = run({"export"}).output;
  ASSERT_NE(before.find("Formatted"), std::string::npos) << before;
  const auto table = temporaryPath("own.csv").string();
  ASSERT_EQ(run({"export", "--format", "csv", "-o", table}).exitCode, 0);
  EXPECT_EQ(countsOf(runJson({"import", table, "--update"})), "cards 1, skipped 1");
  EXPECT_EQ(run({"export"}).output, before);
}

TEST(FormatsCommand, UpdateTheTagsThatATableTells) {
  const auto lines = [](const std::string& categories) {
    return card({"UID:a1", "N:Lee;Ann;;;", "FN:Ann Lee", "X-BEFORE:1", categories, "X-BEHIND:2"});
  };
  const auto import = [](const std::string& tags) {
    const auto table = temporaryFile("tags.csv", "UID,First Name,Tags\na1,Ann," + tags + "\n");
    return countsOf(runJson({"import", "--update", table}));
  };
  const auto cards = temporaryFile("cards.vcf", lines("CATEGORIES:one,two")).string();
  ASSERT_EQ(run({"import", cards}).exitCode, 0);
  EXPECT_EQ(import("one ::: two"), "cards 1, skipped 1");
  EXPECT_EQ(import(""), "cards 1, skipped 1");
  EXPECT_EQ(import("two ::: three"), "cards 1, updated 1");
  const auto exported = run({"export"}).output;
  EXPECT_NE(exported.find("CATEGORIES:two,three\r\n"), std::string::npos) << exported;
  EXPECT_EQ(exported.find("one"), std::string::npos) << exported;
  EXPECT_NE(exported.find("X-BEHIND:2\r\n"), std::string::npos) << exported;
}

TEST(FormatsCommand, GiveADirectoryBackWithItsGroups) {
  importCards();
  const auto file = exported("ldif");
  const auto report = runJson({"import", file});
  EXPECT_EQ(countsOf(report), "cards 3, skipped 2, groups 1");
  EXPECT_EQ(report["problems"].dump(), "[]");
  const auto cards = cardsAfterImport(file, "other.db");
  EXPECT_NE(cards.find("X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:a1"), std::string::npos);
  const auto other = temporaryPath("other.db").string();
  EXPECT_EQ(run({"--store", other, "export", "--format", "ldif"}).output, fileBytes(file));
}

TEST(FormatsCommand, ImportAWholeTableAsOneAct) {
  const auto file = temporaryFile("people.csv", "First Name,Email\nAnn,a@x.org\nBob,\n").string();
  EXPECT_EQ(run({"import", file}).output,
            "2 cards: 2 added, 0 updated, 0 skipped, 0 refused, 0 groups; 0 repaired\n");
  EXPECT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(runJson({"persons"}).size(), 0U);
}

TEST(FormatsCommand, TellWhatBecomesOfColumns) {
  const auto file = temporaryFile("people.csv", "First Name,Home Phone,Shoe\nAnn,1,42\n").string();
  EXPECT_EQ(runJson({"import", "--columns", file}).dump(),
            Json::array(
                {{{"file", file}, {"column", "First Name"}, {"becomes", "first name"}},
                 {{"file", file}, {"column", "Home Phone"}, {"becomes", "phone (Home)"}},
                 {{"file", file}, {"column", "Shoe"}, {"becomes", "unknown, a line in the note"}}})
                .dump());
  EXPECT_EQ(run({"persons"}).exitCode, 1);
}

TEST(FormatsCommand, TellOfEachRowThatIsNotRight) {
  const auto file = temporaryFile("people.csv", "First Name,Shoe\nAnn\n,\nBob,42\n\"Eve").string();
  const auto result = run({"import", file});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(result.output,
            "3 cards: 2 added, 0 updated, 0 skipped, 1 refused, 0 groups; 1 repaired\n");
  EXPECT_EQ(result.errors,
            "oxcontacts: " + file + ":2: 1 cell in a table of 2 columns\n" + "oxcontacts: " + file +
                ":4: column \"Shoe\": not understood, kept as lines in the note\n" +
                "oxcontacts: " + file +
                ":5: the file ends within a quoted cell, which begins in this row\n");
  EXPECT_EQ(run({"import", "--strict", file}).exitCode, 3);
}

TEST(FormatsCommand, RefuseFilesOfAnotherFormat) {
  const auto cards = temporaryFile("cards.vcf", kCards).string();
  const auto wrong = run({"import", "--format", "csv", cards});
  EXPECT_EQ(wrong.exitCode, 1);
  EXPECT_EQ(wrong.errors,
            "oxcontacts: " + cards + ": has no first line that names columns of contacts\n");
  EXPECT_EQ(run({"import", "--format", "ldif", cards}).errors,
            "oxcontacts: " + cards + ": does not begin as LDIF does\n");
  EXPECT_EQ(run({"import", "--columns", "--format", "csv", cards}).exitCode, 1);
  EXPECT_EQ(run({"import", "--format", "yaml", cards}).exitCode, 2);
  EXPECT_EQ(runJson({"persons"}).size(), 0U);
}

TEST(FormatsCommand, ReadATableFromStandardInput) {
  EXPECT_EQ(
      runShell("printf 'First Name\\tEmail\\nAnn\\ta@x.org\\n' | $OX import --format csv -").output,
      "1 card: 1 added, 0 updated, 0 skipped, 0 refused, 0 groups; 0 repaired\n");
}

}  // namespace
}  // namespace ox::program_tests
