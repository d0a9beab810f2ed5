// sync with a folder of vCards.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/oxcontacts/sync/synced_folder.hpp"

namespace ox::program_tests {
namespace {

using FolderSync = SyncedFolder;
using Names = std::vector<std::string>;

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(FolderSync, BringsEveryCardHereAndThenFindsNothingToDo) {
  synchroniseTwo();
  EXPECT_EQ(namesOfPersons(), "Ann Lee|Bob Berg");
  const auto before = text("ann.vcf") + text("bob.vcf");
  const auto again = run({"sync"});
  EXPECT_EQ(again.exitCode, 0);
  EXPECT_EQ(again.output, kNothingDone);
  EXPECT_EQ(again.errors, "");
  EXPECT_EQ(text("ann.vcf") + text("bob.vcf"), before);
}

TEST_F(FolderSync, SendsWhatChangedHereAndKeepsEveryOtherLine) {
  synchroniseTwo();
  run({"set", "Ann Lee", "jobtitle=Head of sales"});
  run({"add-person", "Cards", "name=Eve Moe", "phone=+47 2"});
  const auto result = run({"sync", "Cards"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "Cards: 0 new, 0 changed, 0 deleted here; 2 sent, 0 deleted there\n");
  const auto ann = text("ann.vcf");
  EXPECT_TRUE(holds(ann, "TITLE:Head of sales\r\n")) << ann;
  EXPECT_TRUE(holds(ann, "X-FOO:bar\r\n")) << ann;
  EXPECT_FALSE(holds(ann, "Director")) << ann;
  ASSERT_EQ(names().size(), 3U);
  for (const auto& name : names()) {
    if (name == "ann.vcf" || name == "bob.vcf") continue;
    EXPECT_TRUE(holds(text(name), "FN:Eve Moe\r\n")) << text(name);
    struct stat status {};
    ASSERT_EQ(::stat(path(name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
  }
  EXPECT_EQ(run({"sync"}).output, kNothingDone);
}

TEST_F(FolderSync, TakesWhatChangedThere) {
  synchroniseTwo();
  write("ann.vcf", {"UID:ann", "N:Lee;Anna;;;", "FN:Anna Lee", "TITLE:Director", "X-FOO:bar"});
  write("eve.vcf", {"UID:eve", "N:Moe;Eve;;;", "FN:Eve Moe"});
  std::filesystem::remove(path("bob.vcf"));
  const auto result = run({"sync"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "Cards: 1 new, 1 changed, 1 deleted here; 0 sent, 0 deleted there\n");
  EXPECT_EQ(namesOfPersons(), "Anna Lee|Eve Moe");
  EXPECT_EQ(run({"sync"}).output, kNothingDone);
}

TEST_F(FolderSync, DeletesThereWhatWasRemovedHere) {
  synchroniseTwo();
  run({"remove-person", "Bob Berg"});
  EXPECT_EQ(run({"sync"}).output,
            "Cards: 0 new, 0 changed, 0 deleted here; 0 sent, 1 deleted there\n");
  EXPECT_EQ(names(), Names{"ann.vcf"});
}

TEST_F(FolderSync, LetsAnEditWinOverADeletionOnEitherSide) {
  synchroniseTwo();
  run({"set", "Ann Lee", "jobtitle=Head of sales"});
  std::filesystem::remove(path("ann.vcf"));
  run({"remove-person", "Bob Berg"});
  write("bob.vcf", {"UID:bob", "N:Berg;Bob;;;", "FN:Bob Berg", "TEL;TYPE=HOME:+47 1", "NOTE:new"});
  const auto result = run({"sync"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_TRUE(holds(result.errors, "Ann Lee")) << result.errors;
  EXPECT_TRUE(holds(result.errors, "Bob Berg")) << result.errors;
  EXPECT_EQ(namesOfPersons(), "Ann Lee|Bob Berg");
  EXPECT_EQ(names().size(), 2U);
  EXPECT_EQ(run({"sync"}).output, kNothingDone);
}

TEST_F(FolderSync, PrintsThePlanOfADryRunAndDoesNothing) {
  synchroniseTwo();
  write("eve.vcf", {"UID:eve", "N:Moe;Eve;;;", "FN:Eve Moe"});
  run({"remove-person", "Bob Berg"});
  const auto result = run({"sync", "--dry-run"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output,
            "Cards: 1 new, 0 changed, 0 deleted here; 0 sent, 1 deleted there\n"
            "  here, new: Eve Moe\n"
            "  there, deleted: Bob Berg\n");
  EXPECT_EQ(namesOfPersons(), "Ann Lee");
  EXPECT_EQ(names(), (Names{"ann.vcf", "bob.vcf", "eve.vcf"}));
  EXPECT_EQ(run({"sync"}).output,
            "Cards: 1 new, 0 changed, 0 deleted here; 0 sent, 1 deleted there\n");
}

TEST_F(FolderSync, PullsOnlyAndPushesOnly) {
  synchroniseTwo();
  write("eve.vcf", {"UID:eve", "N:Moe;Eve;;;", "FN:Eve Moe"});
  run({"set", "Ann Lee", "jobtitle=Head of sales"});
  EXPECT_EQ(run({"sync", "--pull-only"}).output,
            "Cards: 1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
  EXPECT_TRUE(holds(text("ann.vcf"), "Director"));
  write("mia.vcf", {"UID:mia", "N:Dahl;Mia;;;", "FN:Mia Dahl"});
  EXPECT_EQ(run({"sync", "--push-only"}).output,
            "Cards: 0 new, 0 changed, 0 deleted here; 1 sent, 0 deleted there\n");
  EXPECT_EQ(namesOfPersons(), "Ann Lee|Bob Berg|Eve Moe");
  EXPECT_EQ(run({"sync"}).output,
            "Cards: 1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
}

TEST_F(FolderSync, StopsBeforeItDeletesMuchAndDoesItWhenItMay) {
  for (int i = 10; i < 30; ++i) {
    const auto number = std::to_string(i);
    write("c" + number + ".vcf", {"UID:c" + number, "N:Lee;P" + number + ";;;", "FN:P" + number});
  }
  ASSERT_EQ(run({"accounts", "add", "Cards", "--folder", path()}).exitCode, 0);
  ASSERT_EQ(run({"sync"}).exitCode, 0);
  for (const auto& name : names()) std::filesystem::remove(path(name));

  const auto stopped = run({"sync"});
  EXPECT_EQ(stopped.exitCode, 1);
  EXPECT_EQ(stopped.output, "");
  EXPECT_TRUE(holds(stopped.errors, "oxcontacts: Cards: here, deleted: P10")) << stopped.errors;
  EXPECT_TRUE(holds(
      stopped.errors,
      "oxcontacts: Cards: the book is empty there; it would delete 20 of 20 contacts "
      "here; nothing was changed. `oxcontacts sync Cards --allow-deletions` lets it happen once\n"))
      << stopped.errors;
  EXPECT_EQ(runJson({"persons"}).size(), 20U);

  EXPECT_EQ(run({"sync", "--allow-deletions"}).output,
            "Cards: 0 new, 0 changed, 20 deleted here; 0 sent, 0 deleted there\n");
  EXPECT_EQ(runJson({"persons"}), Json::array());
}

// A login's name means all its books.
TEST_F(FolderSync, LetsItHappenInTheBookThatWasStoppedAlone) {
  for (const std::string folder : {"Cards", "Other"}) {
    std::filesystem::create_directory(path(folder));
    for (const std::string number : {"1", "2", "3"}) {
      write(folder + "/" + number + ".vcf",
            {"UID:" + folder + number, "N:Lee;P" + number + ";;;", "FN:P" + number});
    }
  }
  ASSERT_EQ(run({"accounts", "add", "Cards", "--folder", path(), "--all"}).exitCode, 0);
  ASSERT_EQ(run({"sync"}).exitCode, 0);
  for (const std::string folder : {"Cards", "Other"}) {
    for (const std::string number : {"1", "2", "3"}) {
      std::filesystem::remove(path(folder + "/" + number + ".vcf"));
    }
  }
  std::string cards;
  for (const auto& account : runJson({"accounts"})) {
    if (account["name"] == "Cards") cards = account["identifier"];
  }
  ASSERT_NE(cards, "");
  const auto stopped = run({"sync"});
  EXPECT_TRUE(holds(stopped.errors, "`oxcontacts sync " + cards + " --allow-deletions`"))
      << stopped.errors;
  EXPECT_TRUE(holds(stopped.errors, "`oxcontacts sync Other --allow-deletions`")) << stopped.errors;
  EXPECT_EQ(run({"sync", cards, "--allow-deletions"}).output,
            "Cards: 0 new, 0 changed, 3 deleted here; 0 sent, 0 deleted there\n");
  EXPECT_EQ(runJson({"persons"}).size(), 3U);
}

// It was taken for what it holds.
TEST_F(FolderSync, DeletesNothingInACopyOfTheStoreUnasked) {
  synchroniseTwo();
  const auto copy = support::temporaryPath("copy.db").string();
  ASSERT_EQ(run({"backup", "--all", copy}).exitCode, 0);
  ASSERT_EQ(run({"remove-person", "Bob Berg"}).exitCode, 0);
  ASSERT_EQ(run({"sync"}).exitCode, 0);

  const auto stopped = run({"--store", copy, "sync"});
  EXPECT_EQ(stopped.exitCode, 1);
  EXPECT_TRUE(holds(stopped.errors,
                    "oxcontacts: Cards: the store is a copy that no run has brought in step since; "
                    "it would delete 1 of 2 contacts here; nothing was changed."))
      << stopped.errors;
  EXPECT_EQ(run({"--store", copy, "sync", "--allow-deletions"}).output,
            "Cards: 0 new, 0 changed, 1 deleted here; 0 sent, 0 deleted there\n");
  std::filesystem::remove(path("ann.vcf"));
  write("eve.vcf", {"UID:eve", "N:Moe;Eve;;;", "FN:Eve Moe"});
  EXPECT_EQ(run({"--store", copy, "sync"}).output,
            "Cards: 1 new, 0 changed, 1 deleted here; 0 sent, 0 deleted there\n");
}

TEST_F(FolderSync, ChangesNothingWhileTheFolderIsAway) {
  synchroniseTwo();
  std::filesystem::rename(path(), path() + "-away");
  const auto away = run({"sync"});
  EXPECT_EQ(away.exitCode, 1);
  EXPECT_EQ(away.output, "");
  EXPECT_EQ(away.errors, "oxcontacts: Cards: " + path() + ": No such file or directory\n");
  EXPECT_EQ(namesOfPersons(), "Ann Lee|Bob Berg");
  std::filesystem::rename(path() + "-away", path());
  EXPECT_EQ(run({"sync"}).output, kNothingDone);
}

TEST_F(FolderSync, NamesCardsThatItRefusesAndGoesOn) {
  writeTwo();
  writeText("two.vcf", card({"UID:x", "FN:X"}) + card({"UID:y", "FN:Y"}));
  std::filesystem::create_symlink(path("ann.vcf"), path("link.vcf"));
  ASSERT_EQ(run({"accounts", "add", "Cards", "--folder", path()}).exitCode, 0);
  const auto result = run({"sync"});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_EQ(result.output,
            "Cards: 2 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there; 2 refused\n");
  EXPECT_TRUE(holds(result.errors, "two.vcf")) << result.errors;
  EXPECT_TRUE(holds(result.errors,
                    "oxcontacts: Cards: refused link.vcf: is a symbolic link, which is not "
                    "followed\n"))
      << result.errors;
  // They are refused still, and nothing else is to be done.
  EXPECT_EQ(run({"sync"}).exitCode, 3);
  std::filesystem::remove(path("link.vcf"));
  std::filesystem::remove(path("two.vcf"));
  EXPECT_EQ(run({"sync"}).exitCode, 0);
}

TEST_F(FolderSync, WritesTheReportThatJsonPrints) {
  synchroniseTwo();
  write("eve.vcf", {"UID:eve", "N:Moe;Eve;;;", "FN:Eve Moe"});
  const auto report = support::temporaryPath("report.json").string();
  const auto printed = runJson({"sync", "--report", report});
  ASSERT_TRUE(printed.is_array()) << printed;
  EXPECT_EQ(Json::parse(support::fileBytes(report)), printed);
  EXPECT_EQ(printed[0]["account"], "Cards");
  EXPECT_EQ(printed[0]["state"], "inStep");
  EXPECT_EQ(printed[0]["down"],
            Json::parse(R"({"added":1,"changed":0,"deleted":0,"broughtBack":0})"));
  EXPECT_EQ(printed[0]["up"],
            Json::parse(R"({"added":0,"changed":0,"deleted":0,"broughtBack":0})"));
  EXPECT_EQ(printed[0]["failure"], Json());
}

TEST_F(FolderSync, TellsWhenItWasLastInStepAndWhatFailedLast) {
  writeTwo();
  run({"accounts", "add", "Cards", "--folder", path()});
  auto status = runJson({"sync", "--status"})[0];
  EXPECT_EQ(status["lastSuccess"], Json());
  EXPECT_EQ(status["url"], path());
  EXPECT_EQ(status["login"], "Cards");
  run({"sync"});
  EXPECT_TRUE(runJson({"sync", "--status"})[0]["lastSuccess"].is_string());
  std::filesystem::rename(path(), path() + "-away");
  run({"sync"});
  status = runJson({"sync", "--status"})[0];
  EXPECT_EQ(status["lastError"], path() + ": No such file or directory");
  const auto text = run({"sync", "--status"});
  EXPECT_EQ(text.exitCode, 0);
  EXPECT_TRUE(text.output.starts_with("ACCOUNT  STATE  LAST SUCCESS")) << text.output;
  EXPECT_TRUE(holds(text.output, "\nCards    away   ")) << text.output;
}

// Two users of one folder, each with a store of her own.
TEST_F(FolderSync, CarriesEditsBetweenTwoStores) {
  synchroniseTwo();
  const auto other = support::temporaryPath("other.db").string();
  const auto there = [&](std::vector<std::string> words) {
    words.insert(words.begin(), {"--store", other});
    return run(words);
  };
  ASSERT_EQ(there({"accounts", "add", "Cards", "--folder", path()}).exitCode, 0);
  ASSERT_EQ(there({"sync"}).exitCode, 0);
  EXPECT_EQ(there({"set", "Bob Berg", "phone=+47 99", "note=called"}).exitCode, 0);
  run({"set", "Bob Berg", "jobtitle=Cook"});
  EXPECT_EQ(there({"sync"}).exitCode, 0);
  EXPECT_EQ(run({"sync"}).exitCode, 0);
  EXPECT_EQ(there({"sync"}).exitCode, 0);
  for (const auto& shown : {run({"show", "Bob Berg"}).output, there({"show", "Bob Berg"}).output}) {
    for (const auto* part : {"Cook", "+47 99", "called"}) EXPECT_TRUE(holds(shown, part)) << shown;
  }
  EXPECT_EQ(run({"sync"}).output, kNothingDone);
  EXPECT_EQ(there({"sync"}).output, kNothingDone);
}

TEST_F(FolderSync, IsTakenBackByUndoAndSentWithTheNextRun) {
  synchroniseTwo();
  write("ann.vcf", {"UID:ann", "N:Lee;Ann;;;", "FN:Ann Lee", "TITLE:Boss", "X-FOO:bar"});
  ASSERT_EQ(run({"sync"}).exitCode, 0);
  const auto undone = run({"undo"});
  ASSERT_EQ(undone.exitCode, 0) << undone.errors;
  EXPECT_TRUE(holds(run({"show", "Ann Lee"}).output, "Director"));
  EXPECT_EQ(run({"sync"}).output,
            "Cards: 0 new, 0 changed, 0 deleted here; 1 sent, 0 deleted there\n");
  EXPECT_TRUE(holds(text("ann.vcf"), "TITLE:Director\r\n")) << text("ann.vcf");
}

TEST_F(FolderSync, RefusesEditsOfAReadOnlyBookWhenTheyAreMade) {
  writeTwo();
  ASSERT_EQ(run({"accounts", "add", "Cards", "--folder", path(), "--read-only"}).exitCode, 0);
  ASSERT_EQ(run({"sync"}).exitCode, 0);
  ASSERT_EQ(run({"accounts", "add", "Mine"}).exitCode, 0);
  ASSERT_EQ(run({"add-person", "Mine", "name=Eve Moe"}).exitCode, 0);
  writeText("two.csv", "First Name,Last Name\nMia,Dahl\n");
  const auto list = path("two.csv");
  const std::string why =
      "the account Cards is read-only: the book that it is in step with takes no changes";
  const std::vector<std::vector<std::string>> edits = {
      {"set", "Ann Lee", "jobtitle=Boss"},  {"add-person", "Cards", "name=Cid Roe"},
      {"remove-person", "Bob Berg"},        {"copy", "Eve Moe", "--to", "Cards"},
      {"move", "Eve Moe", "--to", "Cards"}, {"move", "Ann Lee", "--to", "Mine"},
      {"merge", "Ann Lee", "Bob Berg"},     {"add-group", "Cards", "Club"},
      {"photo", "Ann Lee", "--clear"},      {"import", list, "--into", "Cards"},
  };
  for (const auto& edit : edits) {
    const auto result = run(edit);
    EXPECT_EQ(result.exitCode, 1) << edit[0] << result.output << result.errors;
    EXPECT_TRUE(holds(result.errors, why)) << edit[0] << ": " << result.errors;
  }
  EXPECT_EQ(namesOfPersons(), "Ann Lee|Bob Berg|Eve Moe");
  EXPECT_EQ(run({"tag", "Ann Lee", "--add", "friend"}).exitCode, 0);
  EXPECT_EQ(run({"sync"}).output, kNothingDone);
  EXPECT_TRUE(runJson({"sync", "--status"})[0]["readOnly"]);
}

TEST_F(FolderSync, KeepsWhatIsNewInABookThatTakesNoChangesUntilItIsSetBack) {
  writeTwo();
  ASSERT_EQ(run({"accounts", "add", "Mine"}).exitCode, 0);
  ASSERT_EQ(run({"add-person", "Mine", "name=Eve Moe"}).exitCode, 0);
  ASSERT_EQ(run({"accounts", "add", "Cards", "--folder", path(), "--into", "Mine", "--read-only"})
                .exitCode,
            0);
  const auto kept = run({"sync", "--yes"});
  EXPECT_EQ(kept.exitCode, 3);
  EXPECT_EQ(kept.errors,
            "oxcontacts: Mine: refused Eve Moe: new here, and the book takes no changes\n"
            "oxcontacts: Mine: `oxcontacts sync Mine --set-back` puts back what stands there\n");
  EXPECT_EQ(runJson({"sync"})[0]["kept"], 1);
  EXPECT_EQ(run({"sync", "Mine", "--set-back", "--dry-run"}).output,
            "Mine: 0 new, 0 changed, 1 deleted here; 0 sent, 0 deleted there\n"
            "  here, deleted: Eve Moe\n");
  EXPECT_EQ(run({"sync", "Mine", "--set-back"}).output,
            "Mine: 0 new, 0 changed, 1 deleted here; 0 sent, 0 deleted there\n");
  EXPECT_EQ(namesOfPersons(), "Ann Lee|Bob Berg");
  EXPECT_EQ(run({"sync"}).exitCode, 0);
}

TEST_F(FolderSync, TellsTheConflictsAndWhatComesBackBeforeItIsDone) {
  synchroniseTwo();
  run({"set", "Ann Lee", "jobtitle=Head of sales"});
  write("ann.vcf", {"UID:ann", "N:Lee;Ann;;;", "FN:Ann Lee", "TITLE:Boss", "X-FOO:bar"});
  run({"set", "Bob Berg", "jobtitle=Cook"});
  std::filesystem::remove(path("bob.vcf"));
  EXPECT_EQ(run({"sync", "--dry-run"}).output,
            "Cards: 0 new, 1 changed, 0 deleted here; 0 sent, 1 back, 0 deleted there; 1 conflict\n"
            "  here, changed: Ann Lee\n"
            "  there, back: Bob Berg\n"
            "  conflict: Ann Lee, job title: theirs Boss, ours Head of sales\n");
  EXPECT_EQ(runJson({"sync", "--dry-run"})[0]["newConflicts"].size(), 1U);
  EXPECT_EQ(run({"sync", "--conflicts"}).output, "");
  EXPECT_EQ(
      run({"sync"}).output,
      "Cards: 0 new, 1 changed, 0 deleted here; 0 sent, 1 back, 0 deleted there; 1 conflict\n");
}

TEST_F(FolderSync, ShowsTheLastRunsWithWhatTheyCameTo) {
  synchroniseTwo();
  run({"sync"});
  write("eve.vcf", {"UID:eve", "N:Moe;Eve;;;", "FN:Eve Moe"});
  run({"sync"});
  std::filesystem::rename(path(), path() + "-away");
  run({"sync"});
  run({"sync"});
  const auto runs = runJson({"sync", "--status"})[0]["runs"];
  ASSERT_EQ(runs.size(), 3U);
  EXPECT_EQ(runs[0]["failure"], path() + ": No such file or directory");
  EXPECT_EQ(runs[1]["failure"], Json());
  EXPECT_EQ(runs[1]["down"]["added"], 1);
  EXPECT_EQ(runs[2]["down"]["added"], 2);
  const auto text = run({"sync", "--status"}).output;
  EXPECT_TRUE(holds(text, "\n\nLAST RUNS ")) << text;
  EXPECT_TRUE(holds(text, "  Cards    1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n"))
      << text;
  EXPECT_TRUE(holds(text, "  Cards    failed: " + path() + ": No such file or directory\n"))
      << text;
  std::filesystem::rename(path() + "-away", path());
  run({"sync"});
  EXPECT_EQ(runJson({"sync", "--status"})[0]["lastError"], Json());
}

TEST_F(FolderSync, MakesGroupsOfCategoriesWhereItIsAsked) {
  write("ann.vcf", {"UID:ann", "N:Lee;Ann;;;", "FN:Ann Lee", "CATEGORIES:Club"});
  ASSERT_EQ(
      run({"accounts", "add", "Cards", "--folder", path(), "--categories-as-groups"}).exitCode, 0);
  ASSERT_EQ(run({"sync"}).exitCode, 0);
  EXPECT_EQ(runJson({"groups"})[0]["displayName"], "Club");
  ASSERT_EQ(run({"rename-group", "Club", "Choir"}).exitCode, 0);
  EXPECT_EQ(run({"sync"}).output,
            "Cards: 0 new, 0 changed, 0 deleted here; 1 sent, 0 deleted there\n");
  EXPECT_TRUE(holds(text("ann.vcf"), "CATEGORIES:Choir\r\n")) << text("ann.vcf");
}

}  // namespace
}  // namespace ox::program_tests
