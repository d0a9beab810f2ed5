// accounts add --folder, what accounts tells of it, and what sync is asked in vain.
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/oxcontacts/on_a_terminal.hpp"
#include "tests/oxcontacts/sync/synced_folder.hpp"

namespace ox::program_tests {
namespace {

using AccountsInStep = SyncedFolder;

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(AccountsInStep, AreToldWithWhatTheyAreInStepWith) {
  writeTwo();
  const auto added = run({"accounts", "add", "Cards", "--folder", path()});
  EXPECT_EQ(added.exitCode, 0);
  EXPECT_EQ(added.output, "");
  const auto all = runJson({"accounts"});
  ASSERT_EQ(all.size(), 2U);
  EXPECT_EQ(all[0]["sync"], Json());
  EXPECT_EQ(all[1]["name"], "Cards");
  EXPECT_EQ(all[1]["sync"]["url"], path());
  EXPECT_EQ(all[1]["sync"]["book"], "cards");
  EXPECT_EQ(added.errors, "oxcontacts: found 1 book at " + path() + "\noxcontacts: added Cards (" +
                              all[1]["identifier"].get<std::string>() + ") for " + path() +
                              "\noxcontacts: `oxcontacts sync Cards` brings it in step\n");
  EXPECT_TRUE(holds(run({"accounts"}).output, "IN STEP WITH\n"));
  EXPECT_TRUE(holds(run({"accounts"}).output, path() + "\n"));
}

TEST_F(AccountsInStep, AreMadeOfEachFolderThatHoldsCards) {
  for (const auto* name : {"home", "work", "empty"}) std::filesystem::create_directory(path(name));
  write("home/ann.vcf", {"UID:ann", "FN:Ann"});
  write("work/bob.vcf", {"UID:bob", "FN:Bob"});
  const auto added = runJson({"accounts", "add", "Mine", "--folder", path(), "--book", "work"});
  EXPECT_EQ(added["login"], "Mine");
  ASSERT_EQ(added["added"].size(), 1U);
  EXPECT_EQ(added["added"][0]["name"], "Mine");
  ASSERT_EQ(added["left"].size(), 1U);
  EXPECT_EQ(added["left"][0]["url"], path("home"));
  run({"accounts", "remove", "Mine"});

  const auto both = runJson({"accounts", "add", "Both", "--folder", path()});
  ASSERT_EQ(both["added"].size(), 2U) << both;
  EXPECT_EQ(both["added"][0]["name"], "home");
  EXPECT_EQ(both["added"][1]["name"], "work");
  // The login stands for both, an account for itself.
  EXPECT_EQ(run({"sync", "work"}).output,
            "work: 1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
  EXPECT_EQ(run({"sync", "Both"}).output,
            "home: 1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n"
            "work: 0 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
}

TEST_F(AccountsInStep, TakeAnotherBookOfALoginThatIsThereInTheWordsThatArePrinted) {
  for (const auto* name : {"home", "work", "old"}) std::filesystem::create_directory(path(name));
  write("home/ann.vcf", {"UID:ann", "FN:Ann"});
  write("work/bob.vcf", {"UID:bob", "FN:Bob"});
  write("old/cid.vcf", {"UID:cid", "FN:Cid"});
  const auto first = run({"accounts", "add", "Mine", "--folder", path(), "--book", "work"});
  ASSERT_EQ(first.exitCode, 0) << first.errors;
  EXPECT_TRUE(holds(first.errors, "oxcontacts: left home; `oxcontacts accounts add Mine --book " +
                                      path("home") + "` adds it\n"))
      << first.errors;
  const auto second = run({"accounts", "add", "Mine", "--book", path("home")});
  ASSERT_EQ(second.exitCode, 0) << second.errors;
  EXPECT_EQ(run({"accounts", "add", "Mine", "--folder", path(), "--book", "old"}).exitCode, 0);
  std::string books;
  for (const auto& book : runJson({"sync", "--status"})) {
    EXPECT_EQ(book["login"], "Mine");
    books += book["account"].get<std::string>() + " ";
  }
  EXPECT_EQ(books, "Mine home old ");
  EXPECT_EQ(run({"sync", "home", "old"}).output,
            "home: 1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n"
            "old: 1 new, 0 changed, 0 deleted here; 0 sent, 0 deleted there\n");
}

TEST_F(AccountsInStep, LeaveTheFolderAsItIsWhenTheyAreRemoved) {
  synchroniseTwo();
  const auto before = text("ann.vcf");
  EXPECT_EQ(run({"accounts", "remove", "Cards"}).exitCode, 1);
  const auto removed = run({"accounts", "remove", "Cards", "--force"});
  EXPECT_EQ(removed.exitCode, 0);
  EXPECT_TRUE(removed.errors.ends_with("oxcontacts: removed Cards; nothing was deleted at " +
                                       path() + "\n"))
      << removed.errors;
  EXPECT_EQ(text("ann.vcf"), before);
  EXPECT_EQ(names().size(), 2U);
  EXPECT_EQ(runJson({"sync"}), Json::array());
}

TEST_F(AccountsInStep, TakeContactsThatAreThereOnlyWhenSomebodyAgrees) {
  writeTwo();
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  run({"add-person", "Work", "name=Eve Moe"});
  ASSERT_EQ(run({"accounts", "add", "Cards", "--folder", path(), "--into", "Work"}).exitCode, 0);

  const auto refused = run({"sync"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.output, "");
  EXPECT_TRUE(refused.errors.ends_with(
      "oxcontacts: Work: both sides hold contacts and have not met before: 2 new, 0 changed, 0 "
      "deleted here; 1 sent, 0 deleted there; nothing was changed. `oxcontacts sync Work --yes` "
      "does it\n"))
      << refused.errors;
  EXPECT_EQ(names().size(), 2U);

  const auto no = runOnATerminal({"sync"}, {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}, "n\n");
  EXPECT_EQ(no.exitCode, 1);
  EXPECT_TRUE(holds(no.output, "Do it? [y/N]")) << no.output;
  EXPECT_EQ(names().size(), 2U);
  EXPECT_EQ(namesOfPersons(), "Eve Moe");

  const auto yes = runOnATerminal({"sync"}, {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}, "y\n");
  EXPECT_EQ(yes.exitCode, 0) << yes.output;
  EXPECT_TRUE(holds(yes.output, "Work: 2 new, 0 changed, 0 deleted here; 1 sent, 0 deleted there"))
      << yes.output;
  EXPECT_EQ(names().size(), 3U);
  EXPECT_EQ(namesOfPersons(), "Ann Lee|Bob Berg|Eve Moe");
}

TEST_F(AccountsInStep, MeetByUidAndByContentAndAreNotDoubled) {
  writeTwo();
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  ASSERT_EQ(run({"import", path("ann.vcf"), "--into", "Work"}).exitCode, 0);
  run({"accounts", "add", "Cards", "--folder", path(), "--into", "Work"});
  const auto result = run({"sync", "--yes"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(namesOfPersons(), "Ann Lee|Bob Berg");
  EXPECT_EQ(names().size(), 2U);
}

TEST_F(AccountsInStep, TellWhatIsAskedInVain) {
  writeTwo();
  run({"accounts", "add", "Cards", "--folder", path()});
  std::filesystem::create_directories(path("empty/inner"));
  struct Row {
    std::vector<std::string> arguments;
    int exitCode;
    std::string message;
  };
  const std::vector<Row> rows = {
      {{"sync", "Nobody"}, 4, "there is no account \"Nobody\""},
      {{"sync", "_local"}, 2, "On My Mac is in step with nothing"},
      {{"sync", "--push-only", "--pull-only"}, 2, "--push-only excludes --pull-only"},
      {{"sync", "--conflicts", "--status"}, 2, "--conflicts excludes --status"},
      {{"sync", "--status", "--yes"}, 2, "--status runs nothing, so that --yes is of no use to it"},
      {{"sync", "--resolve", "1", "both"}, 2, "\"both\": what stays is mine or theirs"},
      {{"sync", "--resolve", "1"}, 2, "--resolve"},
      {{"sync", "--report", "-"}, 2, "the report needs a file of its own"},
      {{"accounts", "add", "Cards", "--folder", path()},
       2,
       "every book of the login Cards is in step"},
      {{"accounts", "add", "Cards", "--folder", path("empty")},
       2,
       "there is a login Cards already"},
      {{"accounts", "add", "Cards", "--book", "cards"}, 2, "cards is in step with Cards already"},
      {{"accounts", "add", "x", "--folder", path("none")}, 1, "none: No such file or directory"},
      {{"accounts", "add", "x", "--folder", path("empty")}, 1, "holds a file that ends in .vcf"},
      {{"accounts", "add", "x", "--folder", path(), "--book", "y"}, 4, "there is no book \"y\""},
      {{"accounts", "add", "x", "--folder", path(), "--into", "y"}, 4, "there is no account \"y\""},
      {{"accounts", "add", "x", "--folder", path(), "--into", "Cards"}, 2, "another book already"},
      {{"accounts", "add", "x", "--folder", path(), "--user", "y"}, 2, "--user requires --url"},
      {{"accounts", "add", "x", "--folder", path(), "--type", "local"}, 2, "excludes"},
      {{"accounts", "add", "x", "--url", "h", "--user", "y"}, 2, "password of y comes from"},
      {{"accounts", "add", "x", "--url", "h", "--password-file", "a", "--credential", "b"},
       2,
       "excludes"},
      {{"accounts", "add", "x", "--all"}, 2, "--url or --folder"},
  };
  for (const auto& row : rows) {
    const auto result = run(row.arguments);
    EXPECT_EQ(result.exitCode, row.exitCode) << row.message;
    EXPECT_NE(result.errors.find(row.message), std::string::npos) << row.message << "\n"
                                                                  << result.errors;
    EXPECT_EQ(result.output, "") << row.message;
  }
  EXPECT_EQ(runJson({"accounts"}).size(), 2U);
}

}  // namespace
}  // namespace ox::program_tests
