#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/images/picture_files.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/oxcontacts/store_content.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

void fillStore() {
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount", "--type", "local"});
  const auto cards = card({"UID:u-ann", "N:Lee;Ann;;;", "TEL;TYPE=CELL:1", "TEL;TYPE=HOME:2",
                           "ADR;TYPE=HOME:;;Street 1;Town;;1;Land", "NOTE:likes tea"}) +
                     card({"UID:u-ben", "N:Ray;Ben;;;", "EMAIL:ben@example.com"});
  run({"import", temporaryFile("people.vcf", cards).string()});
  run({"add-group", "_local", "Friends"});
  run({"add-group", "_local", "Close", "--under", "Friends"});
  run({"group-add", "Friends", "Ann Lee", "Ben Ray"});
  run({"group-add", "Close", "Ben Ray"});
  run({"tag", "Ann Lee", "--add", "chess", "--add", "tea"});
}

// As nobody should: rows with sums that fit, and with what no program of ours has written.
void changeRows(const std::string& sql) {
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  sqlite::Connection(store, sqlite::Connection::Mode::ReadWrite).execute(sql.c_str());
}

std::int64_t lastNumber() {
  return runJson({"log", "--limit", "1"})[0]["number"];
}

TEST(LogCommand, TellsWhoDidWhatAndWhen) {
  fillStore();
  run({"set", "Ann Lee", "phone+=+3"});
  run({"remove-person", "Ben Ray"});
  const auto log = runJson({"log", "--limit", "2"});
  ASSERT_EQ(log.size(), 2U) << log;
  EXPECT_EQ(log[0]["program"], "oxcontacts");
  EXPECT_EQ(log[0]["command"], "remove-person 'Ben Ray'");
  EXPECT_EQ(log[0]["removed"], 1);
  EXPECT_EQ(log[1]["command"], "set 'Ann Lee' phone+=+3");
  EXPECT_EQ(log[1]["changed"], 1);
  EXPECT_EQ(log[1]["records"], 1);
  EXPECT_GT(log[0]["number"], log[1]["number"]);
}

TEST(LogCommand, TellsWhatWasDoneToOnePersonValueByValue) {
  fillStore();
  run({"set", "Ben Ray", "note=fond of tea"});
  run({"group-remove", "Close", "Ben Ray"});
  run({"remove-person", "Ben Ray"});
  const auto log = runJson({"log", "Ben Ray"});
  std::string text;
  for (const auto& entry : log) {
    text += entry["what"].get<std::string>() + " " + entry["property"].dump() + " " +
            (entry["what"] == "removed" ? std::string("...") : entry["before"].dump()) + " " +
            entry["after"].dump() + "\n";
  }
  EXPECT_EQ(text,
            "removed null ... null\n"
            "taken out of group \"Group\" \"Friends\" null\n"
            "taken out of group \"Group\" \"Close\" null\n"
            "changed \"OxProPertyNote\" null \"fond of tea\"\n"
            "put into group \"Group\" null \"Close\"\n"
            "put into group \"Group\" null \"Friends\"\n"
            "added null null null\n");
}

// Each command is done, undone, done again by redo and undone once more: every time the store is as
// it was.
TEST(UndoCommand, TakesBackEachCommandAndRedoTakesThatBack) {
  fillStore();
  const auto more = temporaryFile("more.vcf", card({"UID:u-ann", "N:Lee;Ann;;;", "TEL:99"}) +
                                                  card({"UID:u-cy", "N:Cy;;;;", "NOTE:new"}));
  const auto book = support::temporaryPath("book").string();
  run({"backup", "_local", book});
  run({"set", "Ben Ray", "note=after the backup"});
  const auto picture = temporaryFile("p.tiff", *images::encodeTiff(images::patterned(5, 4)));
  const std::vector<std::vector<std::string>> commands = {
      {"set", "Ann Lee", "phone+=+3", "note=", "name=Anna Lee"},
      {"add-person", "_local", "name=Dee", "phone=4"},
      {"remove-person", "Ben Ray"},
      {"remove-person", "Ann Lee", "Ben Ray"},
      {"add-group", "_local", "New", "--under", "Close"},
      {"rename-group", "Friends", "Foes"},
      {"remove-group", "Close"},
      {"group-add", "Close", "Ann Lee"},
      {"group-remove", "Friends", "Ben Ray", "--recursive"},
      {"copy", "Ann Lee", "--to", "W"},
      {"import", more.string()},
      {"import", more.string(), "--update"},
      {"restore", "_local", book},
      {"accounts", "add", "Third"},
      {"tag", "Ann Lee", "--remove", "tea", "--add", "golf"},
      {"photo", "Ben Ray", "--set", picture},
  };
  for (const auto& command : commands) {
    const auto before = storeContent();
    const auto done = run(command);
    ASSERT_EQ(done.exitCode, 0) << command[0] << done.errors;
    const auto after = storeContent();
    EXPECT_NE(before, after) << command[0];
    for (int i = 0; i < 2; ++i) {
      const auto undone = run({"undo"});
      EXPECT_EQ(undone.exitCode, 0) << command[0] << undone.errors;
      EXPECT_EQ(storeContent(), before) << command[0];
      const auto redone = run({"redo"});
      EXPECT_EQ(redone.exitCode, 0) << command[0] << redone.errors;
      EXPECT_EQ(storeContent(), after) << command[0];
    }
    run({"undo"});
    EXPECT_EQ(storeContent(), before) << command[0];
    EXPECT_EQ(run({"check"}).output, "sound\n") << command[0];
  }
}

TEST(UndoCommand, BringsBackAnAccountThatWasRemovedWithEverythingInIt) {
  fillStore();
  run({"copy", "Ann Lee", "--to", "W"});
  run({"add-group", "W", "Team"});
  run({"group-add", "Team", "Ann Lee", "--book", "W"});
  const auto before = storeContent();
  ASSERT_EQ(run({"accounts", "remove", "W", "--force"}).exitCode, 0);
  ASSERT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(storeContent(), before);
}

TEST(UndoCommand, LeavesWhatOthersHaveChangedSinceAndNamesIt) {
  fillStore();
  run({"set", "Ann Lee", "note=coffee", "nickname=Annie", "phone+=+3"});
  const auto number = lastNumber();
  run({"set", "Ann Lee", "note=cocoa", "phone+=+4"});
  const auto result = run({"undo", std::to_string(number)});
  EXPECT_EQ(result.exitCode, 3) << result.errors;
  EXPECT_NE(result.errors.find("Ann Lee: Note was changed since, and stays"), std::string::npos)
      << result.errors;
  const auto shown = run({"show", "Ann Lee"}).output;
  EXPECT_NE(shown.find("cocoa"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("Annie"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("+3"), std::string::npos) << shown;
  EXPECT_NE(shown.find("+4"), std::string::npos) << shown;
}

TEST(UndoCommand, KeepsAPersonWhomOthersHaveChangedSinceSheWasAdded) {
  fillStore();
  run({"add-person", "_local", "name=Dee"});
  const auto number = std::to_string(lastNumber());
  run({"set", "Dee", "note=mine"});
  const auto kept = run({"undo", number});
  EXPECT_EQ(kept.exitCode, 3);
  EXPECT_NE(kept.errors.find("Dee: it was changed since it was added, and stays"),
            std::string::npos)
      << kept.errors;
  EXPECT_EQ(runJson({"persons", "--find", "Dee"}).size(), 1U);
}

std::string groupsOf(const Json& person) {
  std::string names;
  for (const auto& group : person["groups"]) names += group["displayName"].get<std::string>() + " ";
  return names;
}

TEST(UndoCommand, LeavesWhoStaysInTheGroupsThatStay) {
  fillStore();
  run({"import",
       temporaryFile("more.vcf",
                     card({"UID:eve", "N:;Eve;;;"}) + card({"UID:fay", "N:;Fay;;;"}) +
                         card({"UID:choir", "N:Choir", "FN:Choir", "X-ADDRESSBOOKSERVER-KIND:group",
                               "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:eve",
                               "X-ADDRESSBOOKSERVER-MEMBER:urn:uuid:fay"}))
           .string()});
  const auto number = std::to_string(lastNumber());
  run({"set", "Eve", "note=mine"});
  run({"rename-group", "Choir", "Chorus"});
  EXPECT_EQ(run({"undo", number}).exitCode, 3);
  EXPECT_EQ(run({"persons", "--find", "Fay"}).exitCode, 4);
  EXPECT_EQ(groupsOf(runJson({"show", "Eve"})), "Chorus ");
  EXPECT_EQ(runJson({"persons", "--group", "Chorus"}).size(), 1U);
}

TEST(UndoCommand, LeavesWhoStaysHerTags) {
  fillStore();
  const auto book = support::temporaryPath("book").string();
  run({"backup", "_local", book});
  run({"restore", "_local", book});
  const auto number = std::to_string(lastNumber());
  run({"set", "Ann Lee", "note=mine"});
  const std::string id = runJson({"show", "Ann Lee"})["ID"];
  EXPECT_EQ(run({"undo", number}).exitCode, 3);
  const auto shown = runJson({"show", id});
  EXPECT_EQ(shown["tags"], Json({"chess", "tea"})) << shown;
  EXPECT_EQ(groupsOf(shown), "");  // the restored groups have gone again
}

TEST(UndoCommand, CountsPersonsWhoseTagsItChanged) {
  fillStore();
  run({"tag", "Ann Lee", "--add", "golf"});
  EXPECT_EQ(runJson({"undo"})["records"], 1);
  EXPECT_EQ(runJson({"redo"})["records"], 1);
}

TEST(UndoCommand, RemovesAPersonWhomOthersHaveChangedAndTakenThatBack) {
  fillStore();
  run({"add-person", "_local", "name=Dee"});
  const auto number = std::to_string(lastNumber());
  run({"set", "Dee", "note=mine"});
  run({"undo"});
  EXPECT_EQ(run({"undo", number}).exitCode, 0);
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
}

TEST(UndoCommand, SaysWhatCannotBeTakenBack) {
  makeStore();
  EXPECT_EQ(run({"undo"}).exitCode, 4);
  EXPECT_EQ(run({"undo"}).errors, "oxcontacts: there is nothing to take back\n");
  EXPECT_EQ(run({"redo"}).errors, "oxcontacts: there is nothing to take back\n");
  run({"add-person", "_local", "name=Dee"});
  const auto number = std::to_string(lastNumber());
  EXPECT_EQ(run({"undo", "77"}).errors, "oxcontacts: the journal has no command 77\n");
  EXPECT_EQ(run({"undo", number}).exitCode, 0);
  const auto again = run({"undo", number});
  EXPECT_EQ(again.exitCode, 1);
  EXPECT_EQ(again.errors, "oxcontacts: command " + number + " was taken back by " + "command " +
                              std::to_string(lastNumber()) + "\n");
}

// Whoever followed such commands from one to the next would come round again.
TEST(UndoCommand, RefusesAJournalThatGoesRoundInCircles) {
  run({"add-person", "_local", "name=Dee"});
  run({"undo"});
  run({"redo"});
  changeRows("UPDATE origin SET undoes = first_act WHERE undoes IS NOT NULL");
  const auto checked = run({"check"});
  EXPECT_EQ(checked.exitCode, 1);
  EXPECT_NE(checked.output.find("takes back what came after it\n"), std::string::npos)
      << checked.output;
  for (const auto* command : {"undo", "redo", "log"}) {
    const auto result = run({command});
    EXPECT_EQ(result.exitCode, 1) << command;
    EXPECT_NE(result.errors.find("an origin of the journal"), std::string::npos) << result.errors;
  }
  EXPECT_EQ(runJson({"persons"}).size(), 1U);
}

TEST(UndoCommand, RefusesAnActThatBeginsBehindItsEnd) {
  run({"add-person", "_local", "name=Dee"});
  run({"add-person", "_local", "name=Eve"});
  changeRows("UPDATE act SET next_record = 0 WHERE number = (SELECT max(number) FROM act)");
  for (const auto* command : {"undo", "log"}) {
    const auto result = run({command});
    EXPECT_EQ(result.exitCode, 1) << command;
    EXPECT_NE(result.errors.find(" in the journal is damaged"), std::string::npos)
        << command << result.errors;
  }
  EXPECT_NE(run({"check"}).output.find("its place in the journal is damaged"), std::string::npos);
}

// A number whose last byte is that of a kind is no kind.
TEST(TrashCommand, IsRefusedWhereAChangeIsOfNoKnownKind) {
  run({"add-person", "_local", "name=Dee"});
  run({"remove-person", "Dee"});
  changeRows("UPDATE change SET what = 259 WHERE what = 3");
  EXPECT_EQ(run({"trash"}).exitCode, 1);
  EXPECT_NE(run({"check"}).output.find(" of the journal is of no known kind\n"), std::string::npos);
}

// A negative one means an account that the act is only about to make.
TEST(UndoCommand, IsRefusedWhereAChangeIsInNoAccount) {
  run({"add-group", "_local", "Chess"});
  run({"remove-group", "Chess"});
  for (const auto* number : {"-1", "4294967297"}) {
    changeRows(std::string("UPDATE change SET container = ") + number);
    EXPECT_EQ(run({"undo"}).exitCode, 1);
    EXPECT_NE(run({"check"}).output.find(" of the journal: it is in no account\n"),
              std::string::npos);
  }
}

TEST(UndoCommand, IsRefusedWhereAnAccountHasANumberThatNoneCanHave) {
  run({"accounts", "add", "Work", "--identifier", "w:ABAccount"});
  run({"accounts", "remove", "Work"});
  changeRows("UPDATE change SET record = -1 WHERE what = 8");
  EXPECT_EQ(run({"undo"}).exitCode, 1);
  EXPECT_NE(run({"check"}).output.find(" of the journal: it is in no account\n"),
            std::string::npos);
}

TEST(UndoCommand, BringsNoLinkBackThatCannotBe) {
  run({"accounts", "add", "Work", "--identifier", "w:ABAccount"});
  run({"add-group", "_local", "Chess"});
  run({"add-person", "_local", "name=Dee"});
  run({"group-add", "Chess", "Dee"});
  run({"group-remove", "Chess", "Dee"});
  changeRows("UPDATE record SET container = 2 WHERE kind = 0");
  EXPECT_EQ(run({"check"}).exitCode, 0);
  const auto result = run({"undo"});
  EXPECT_NE(result.errors.find("it cannot be in "), std::string::npos) << result.errors;
  EXPECT_EQ(run({"check"}).exitCode, 0);
}

TEST(UndoCommand, BringsNobodyBackIntoARowThatWasNeverThere) {
  run({"add-person", "_local", "name=Dee"});
  run({"remove-person", "Dee"});
  changeRows("UPDATE change SET record = 77 WHERE what = 3");
  const auto before = run({"check"}).output;
  EXPECT_NE(before.find(" of the journal: its record was never there\n"), std::string::npos);
  const auto result = run({"undo"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.errors.find("row 77 was never there"), std::string::npos) << result.errors;
  EXPECT_EQ(run({"check"}).output, before);
}

// What a removed record was called can be read, or the check tells.
TEST(TrashCommand, IsRefusedWhereACheckNamesADamagedIdentifier) {
  run({"add-person", "_local", "name=Dee"});
  run({"remove-person", "Dee"});
  changeRows("UPDATE change SET after = x'0102' WHERE what = 3");
  EXPECT_EQ(run({"trash"}).exitCode, 1);
  const auto checked = run({"check"});
  EXPECT_EQ(checked.exitCode, 1);
  EXPECT_NE(checked.output.find("of the journal: a stored identifier is damaged\n"),
            std::string::npos)
      << checked.output;
}

TEST(ShowCommand, ShowsAPersonAsSheWas) {
  fillStore();
  run({"set", "Ann Lee", "note=coffee"});
  const auto time = runJson({"log", "--limit", "1"})[0]["time"].get<std::string>();
  // The journal tells times to the millisecond, a command line to the second.
  runShell("sleep 1.1");
  run({"set", "Ann Lee", "note=cocoa", "phone="});
  run({"tag", "Ann Lee", "--remove", "tea"});
  run({"remove-person", "Ann Lee"});
  const auto past = runJson({"show", "Ann Lee", "--at", time});
  EXPECT_EQ(past["displayName"], "Ann Lee") << past;
  EXPECT_EQ(past["tags"], Json({"chess", "tea"}));
  EXPECT_EQ(past["groups"][0]["displayName"], "Friends");
  std::string values;
  for (const auto& property : past["properties"]) {
    values += property["name"].get<std::string>() + " ";
    if (property["name"] == "OxProPertyNote") {
      EXPECT_EQ(property["value"], "coffee");
    }
    if (property["name"] == "OxProPertyPhone") {
      EXPECT_EQ(property["values"].size(), 2U);
    }
  }
  EXPECT_NE(values.find("OxProPertyPhone"), std::string::npos) << values;
  EXPECT_EQ(run({"show", "Ann Lee", "--at", "2001-02-03"}).exitCode, 4);
  EXPECT_EQ(run({"show", "Ann Lee", "--at", "soon"}).exitCode, 2);
}

TEST(TrashCommand, ListsWhoWasRemovedUntilSheIsBack) {
  fillStore();
  run({"remove-person", "Ben Ray"});
  run({"remove-group", "Close"});
  const auto trash = runJson({"trash"});
  ASSERT_EQ(trash.size(), 2U) << trash;
  EXPECT_EQ(trash[0]["displayName"], "Close");
  EXPECT_EQ(trash[0]["kind"], "group");
  EXPECT_EQ(trash[1]["displayName"], "Ben Ray");
  EXPECT_EQ(run({"undo", trash[1]["number"].dump()}).exitCode, 0);
  EXPECT_EQ(runJson({"trash"}).size(), 1U);
}

}  // namespace
}  // namespace ox::program_tests
