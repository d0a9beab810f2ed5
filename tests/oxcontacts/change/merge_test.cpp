// duplicates, merge and move.
#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

// A white PNG of one pixel.
constexpr const char* kPicture =
    "PHOTO;ENCODING=b;TYPE=PNG:"
    "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAAAAAA6fptVAAAACklEQVR4nGP4DwABAQEAG7bu"
    "dwAAAABJRU5ErkJggg==";

void fillStore() {
  const auto file = temporaryFile(
      "cards.vcf",
      card({"UID:1", "N:Lee;Ann;;;", "FN:Ann Lee", "TEL;TYPE=CELL:+1 555 1234567",
            "EMAIL:ann@example.org", "ORG:Acme", "NOTE:first", "X-FOO:bar"}) +
          card({"UID:2", "N:Lee;Ann;B.;;", "FN:Ann B. Lee", "TEL;TYPE=HOME:+1 (555) 123-45.67",
                "TEL:777888999", "EMAIL:ANN@example.org", "EMAIL:b@example.org", "ORG:Beta",
                "TITLE:Boss", "BDAY:1990-05-17", "NOTE:second", "item1.X-BAZ:qux", kPicture}) +
          card({"UID:3", "N:Berg;Bo;;;", "FN:Bo Berg"}) +
          card({"UID:g", "FN:Friends", "N:Friends;;;;", "X-ADDRESSBOOKSERVER-KIND:group",
                "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:2"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
  ASSERT_EQ(run({"accounts", "add", "Work", "--identifier", "W:ABAccount"}).exitCode, 0);
  ASSERT_EQ(run({"tag", "Ann Lee", "--add", "own"}).exitCode, 0);
  ASSERT_EQ(run({"tag", "Ann B. Lee", "--add", "other", "--add", "own"}).exitCode, 0);
}

std::string cardOfPerson(const std::string& person) {
  auto text = run({"export", person}).output;
  std::erase(text, '\r');
  return text;
}

TEST(DuplicatesCommand, NamesTheReasonsAndTheLikeliestFirst) {
  const auto file = temporaryFile(
      "cards.vcf",
      card({"N:Kay;Sue;;;", "FN:Sue Kay"}) +
          card({"N:Lee;Ann;;;", "FN:Ann Lee", "TEL:+49 30 1234567", "EMAIL:ann@example.org"}) +
          card({"N:Kay;Suey;;;", "FN:Suey Kay"}) +
          card({"N:Li;Anna;;;", "FN:Anna Li", "TEL:030/1234567", "EMAIL:Ann@Example.org"}));
  ASSERT_EQ(run({"import", file}).exitCode, 0);
  const auto ids = personIds();
  const auto shortId = [&](const char* name) { return ids.at(name).substr(0, 18); };
  EXPECT_EQ(run({"duplicates"}).output,
            "PERSON   ID                  MAY BE    ID                  WHY\nAnn Lee  " +
                shortId("Ann Lee") + "  Anna Li   " + shortId("Anna Li") +
                "  same e-mail ann@example.org, same number +49 30 1234567\nSue Kay  " +
                shortId("Sue Kay") + "  Suey Kay  " + shortId("Suey Kay") + "  near name\n");
  const auto json = runJson({"duplicates"});
  EXPECT_EQ(json[1]["persons"][0]["displayName"], "Sue Kay");
  EXPECT_EQ(json[1]["reasons"], Json::array({{{"reason", "near name"}, {"shared", "Suey Kay"}}}));
  EXPECT_EQ(run({"duplicates", "--find", "sue"}).exitCode, 0);
  EXPECT_EQ(run({"remove-person", "Suey Kay", "Anna Li"}).exitCode, 0);
  const auto none = run({"duplicates"});
  EXPECT_EQ(none.output, "");
  EXPECT_EQ(none.errors, "oxcontacts: no two records seem to be of one person\n");
}

TEST(MergeCommand, LosesNothing) {
  fillStore();
  const auto id = runJson({"show", "Ann Lee"})["ID"].get<std::string>();
  const auto merged = run({"merge", "Ann Lee", "Ann B. Lee"});
  EXPECT_EQ(merged.exitCode, 0) << merged.errors;
  EXPECT_EQ(merged.output,
            "GAINS                                VALUE\n"
            "Middle                               B.\n"
            "Job Title                            Boss\n"
            "Birthday                             1990-05-17\n"
            "Phone                                777888999\n"
            "Email                                b@example.org\n"
            "Other line of the card               X-BAZ:qux\n"
            "Note                                 second\n"
            "Company                 in the note  Beta\n"
            "Picture\n"
            "Tag                                  other\n"
            "Group                                Friends\n"
            "Label of Phone          left behind  Home: +1 (555) 123-45.67\n");
  EXPECT_EQ(cardOfPerson(id),
            std::string("BEGIN:VCARD\nVERSION:3.0\nN:Lee;Ann;B.;;\nFN:Ann B. Lee\nORG:Acme\n"
                        "TITLE:Boss\nBDAY:1990-05-17\nTEL;TYPE=CELL:+1 555 1234567\n"
                        "TEL:777888999\nEMAIL:ann@example.org\nEMAIL:b@example.org\n"
                        "NOTE:first\\nsecond\\nCompany: Beta\n") +
                cardOfPerson(id).substr(cardOfPerson(id).find("PHOTO")));
  const auto shown = runJson({"show", id});
  EXPECT_EQ(shown["tags"], Json::array({"own", "other"}));
  EXPECT_EQ(shown["groups"][0]["displayName"], "Friends");
  EXPECT_NE(cardOfPerson(id).find("\nUID:1\nCATEGORIES:own,other\nX-FOO:bar\nX-BAZ:qux\n"),
            std::string::npos)
      << cardOfPerson(id);
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
}

TEST(MergeCommand, IsOneActThatUndoTakesBack) {
  fillStore();
  const auto before = run({"export"}).output;
  const auto tags = runJson({"show", "Ann B. Lee"})["tags"];
  ASSERT_EQ(run({"merge", "Ann Lee", "Ann B. Lee"}).exitCode, 0);
  ASSERT_NE(run({"export"}).output, before);
  EXPECT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(run({"export"}).output, before);
  EXPECT_EQ(runJson({"show", "Ann B. Lee"})["tags"], tags);
}

TEST(MergeCommand, ShowsWithoutChangingWhenDry) {
  fillStore();
  const auto before = run({"export"}).output;
  const auto dry = run({"merge", "Ann Lee", "Ann B. Lee", "--dry-run"});
  EXPECT_EQ(dry.exitCode, 0);
  EXPECT_NE(dry.output.find("Job Title                            Boss\n"), std::string::npos);
  EXPECT_TRUE(dry.errors.starts_with("oxcontacts: would merge Ann B. Lee (")) << dry.errors;
  EXPECT_EQ(run({"export"}).output, before);
  EXPECT_EQ(runJson({"log"}).size(), 4U);
}

TEST(MergeCommand, TellsWhatStaysBehind) {
  fillStore();
  ASSERT_EQ(run({"move", "Ann Lee", "--to", "Work"}).exitCode, 0);
  const auto other = runJson({"merge", "Work/Ann Lee", "Ann B. Lee"});
  EXPECT_EQ(other["leaves"], Json::array({{{"property", "Label of Phone"},
                                           {"how", "left behind"},
                                           {"value", "Home: +1 (555) 123-45.67"}},
                                          {{"property", "Group"},
                                           {"how", "left behind"},
                                           {"value", "Friends, of another book"}}}));
  EXPECT_EQ(other["person"]["addressBookID"], "W");
  EXPECT_EQ(other["person"]["groups"], Json::array());
}

TEST(DuplicatesCommand, NamesTheBooksOfTwoInTwoBooks) {
  run({"add-person", "_local", "name=Ann Lee", "phone=1234567"});
  run({"accounts", "add", "Work"});
  run({"add-person", "Work", "name=Ann Lee", "phone=123 45 67"});
  EXPECT_EQ(runShell("COLUMNS=80 $OX duplicates").output,
            "PERSON             MAY BE        WHY\n"
            "On My Mac/Ann Lee  Work/Ann Lee  same name, same number 1234567\n");
  EXPECT_EQ(run({"merge", "On My Mac/Ann Lee", "Work/Ann Lee"}).exitCode, 0);
}

TEST(MergeCommand, RefusesARecordAndItself) {
  fillStore();
  const auto same = run({"merge", "Bo Berg", "berg"});
  EXPECT_EQ(same.exitCode, 2);
  EXPECT_EQ(runJson({"persons"}).size(), 3U);
  EXPECT_EQ(run({"merge", "Bo Berg", "Nobody"}).exitCode, 4);
}

TEST(MoveCommand, TakesEverythingAlong) {
  fillStore();
  const auto before = cardOfPerson("Ann B. Lee");
  const auto result = run({"move", "Ann B. Lee", "Bo Berg", "--to", "Work"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_NE(result.errors.find("Ann B. Lee leaves the group Friends\n"), std::string::npos);
  EXPECT_EQ(cardOfPerson("Ann B. Lee"), before);
  const auto moved = runJson({"show", "Ann B. Lee"});
  EXPECT_EQ(moved["addressBookID"], "W");
  EXPECT_EQ(moved["tags"], Json::array({"other", "own"}));
  EXPECT_EQ(runJson({"persons", "--book", "Work"}).size(), 2U);
  EXPECT_EQ(runJson({"persons", "--book", "_local"}).size(), 1U);
  EXPECT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(runJson({"persons", "--book", "Work"}).size(), 0U);
  EXPECT_EQ(runJson({"show", "Ann B. Lee"})["groups"][0]["displayName"], "Friends");
}

TEST(MoveCommand, LeavesWhoIsThereAlready) {
  fillStore();
  const auto id = runJson({"show", "Bo Berg"})["ID"];
  const auto result = run({"move", "Bo Berg", "--to", "_local"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.errors, "oxcontacts: everybody is in On My Mac already\n");
  EXPECT_EQ(runJson({"show", "Bo Berg"})["ID"], id);
}

}  // namespace
}  // namespace ox::program_tests
