#include <csignal>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <unistd.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/damaged_rows.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::fileBytes;
using support::temporaryFile;
using support::temporaryPath;

std::string storeWith(const char* name, const char* statement) {
  auto path = temporaryPath(name).string();
  makeStore(path);
  sqlite::Connection(path, sqlite::Connection::Mode::ReadWrite).execute(statement);
  return path;
}

std::string foreignDatabase() {
  auto path = temporaryPath("foreign.db").string();
  sqlite::Connection(path, sqlite::Connection::Mode::ReadWriteCreate)
      .execute("CREATE TABLE recipe(name TEXT)");
  return path;
}

// It is told to whoever asks for tags.
TEST(StoreProblems, ADamagedTagDebtKeepsNobodyFromBeingListed) {
  run({"add-person", "_local", "name=Dee"});
  run({"tag", "Dee", "--add", "golf"});
  const std::string store = support::StoreEnvironment::instance().contactStore();
  support::writeDamagedRows(store, "UPDATE tag_debt SET number = number");
  EXPECT_EQ(run({"check"}).exitCode, 1);
  for (const auto* command : {"persons", "books", "groups", "export"}) {
    const auto result = run({command});
    EXPECT_EQ(result.exitCode, 0) << command << result.errors;
    EXPECT_EQ(result.errors, "") << command;
  }
}

// Numbers below 0 mean accounts that an act is only about to make.
TEST(StoreProblems, TellOfRecordsInAnAccountThatCannotBe) {
  const std::string store = support::StoreEnvironment::instance().contactStore();
  for (const auto* number : {"-1", "4294967297"}) {
    run({"accounts", "add", "Work", "--identifier", "w:ABAccount"});
    run({"add-group", "w", "Chess"});
    run({"add-person", "w", "name=Dee"});
    sqlite::Connection(store, sqlite::Connection::Mode::ReadWrite)
        .execute(std::string("PRAGMA defer_foreign_keys=1; BEGIN; UPDATE container SET id = ")
                     .append(number)
                     .append(" WHERE identifier = 'w:ABAccount'; UPDATE record SET container = ")
                     .append(number)
                     .append("; COMMIT")
                     .c_str());
    const auto checked = run({"check"});
    EXPECT_EQ(checked.exitCode, 1);
    EXPECT_NE(checked.output.find("row " + std::string(number) +
                                  " of container has a number that no account can have\n"),
              std::string::npos)
        << checked.output;
    const auto added = run({"group-add", "Chess", "Dee"});
    EXPECT_EQ(added.exitCode, 1) << number;
    EXPECT_NE(added.errors.find(" is in no account"), std::string::npos) << added.errors;
    std::filesystem::remove(store);
  }
}

TEST(StoreProblems, AreNamedWithFileAndReasonByEveryCommand) {
  std::filesystem::create_directory(temporaryPath("folder"));
  struct Row {
    std::string store;
    const char* reason;
  };
  const std::vector<Row> rows = {
      {temporaryPath("folder"), "directory"},
      {temporaryFile("text.db", std::string(5000, 'x')), "not a contact store"},
      {foreignDatabase(), "another program"},
      {storeWith("newer.db", "PRAGMA user_version=99"), "newer version"},
      {temporaryFile("file", "") / "below.db", "Not a directory"},
      {storeWith("foreign trigger.db",
                 "CREATE TRIGGER full BEFORE INSERT ON act "
                 "BEGIN SELECT raise(ABORT, 'no room'); END"),
       "the trigger \"full\" does not belong there"},
  };
  const auto cards = temporaryFile("one.vcf", card({"N:;Ann;;;", "FN:Ann"})).string();
  const std::vector<std::vector<std::string>> commands = {
      {"accounts"},      {"accounts", "add", "x"},
      {"import", cards}, {"books"},
      {"persons"},       {"groups"},
      {"show", "x"},     {"persons", "--book", "x"},
      {"export"},        {"check"}};
  for (const auto& row : rows) {
    const auto before = std::filesystem::is_regular_file(row.store) ? fileBytes(row.store) : "";
    for (auto command : commands) {
      command.insert(command.begin(), {"--store", row.store});
      const auto result = run(command);
      EXPECT_EQ(result.exitCode, 1) << row.reason << " " << command[2];
      EXPECT_EQ(result.output, "") << command[2];
      EXPECT_NE(result.errors.find(row.store), std::string::npos) << command[2] << result.errors;
      EXPECT_NE(result.errors.find(row.reason), std::string::npos) << command[2] << result.errors;
    }
    const auto after = std::filesystem::is_regular_file(row.store) ? fileBytes(row.store) : "";
    EXPECT_EQ(before, after) << row.store;
  }
}

TEST(StoreProblems, ADamagedAccountCostsItselfAlone) {
  run({"accounts", "add", "Marker", "--identifier", "M:ABAccount"});
  run({"add-person", "Marker", "name=Eve"});
  run({"add-person", "_local", "name=Ann"});
  const auto cards = temporaryPath("all.vcf").string();
  EXPECT_EQ(run({"export", "-o", cards}).exitCode, 0);
  const auto exported = fileBytes(cards);
  support::writeDamagedRows(support::StoreEnvironment::instance().contactStore().string(),
                            "UPDATE container SET type = type WHERE id = 2");
  const std::string told = "row 2 of the accounts is damaged";
  for (const auto& [command, shown] : std::map<std::string, std::string>{
           {"persons", "Ann"}, {"books", "On My Mac"}, {"accounts", "On My Mac"}}) {
    const auto result = run({command});
    EXPECT_EQ(result.exitCode, 1) << command;
    EXPECT_NE(result.output.find(shown), std::string::npos) << command << result.output;
    EXPECT_NE(result.errors.find(told), std::string::npos) << command << result.errors;
    EXPECT_EQ(result.output.find("arker"), std::string::npos) << command << result.output;
  }
  EXPECT_EQ(run({"export", "-o", cards}).exitCode, 1);
  EXPECT_EQ(fileBytes(cards), exported) << "nothing good is replaced by less";
  const auto check = run({"check"});
  EXPECT_EQ(check.exitCode, 1);
  EXPECT_EQ(check.output,
            "row 2 of container is damaged: its checksum differs\n"
            "records that no book shows, because row 2 of container, their account, is damaged: "
            "1\n");
}

// What is damaged is not said to be gone, and nothing is taken back by halves.
TEST(StoreProblems, NothingIsUndoneThatADamagedAccountIsIn) {
  run({"accounts", "add", "Marker", "--identifier", "M:ABAccount"});
  run({"add-person", "Marker", "name=Eve"});
  run({"add-person", "_local", "name=Ann"});
  run({"remove-person", "Eve"});
  run({"set", "Ann", "note=one"});
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  support::writeDamagedRows(store, "UPDATE container SET type = type WHERE id = 2");
  const std::string told = store + ": row 2 of the accounts is damaged";
  for (const auto* number : {"4", "1"}) {  // the removal of Eve, the making of her account
    const auto undone = run({"undo", number});
    EXPECT_EQ(undone.exitCode, 1) << number;
    EXPECT_EQ(undone.output, "") << number;
    EXPECT_NE(undone.errors.find(told), std::string::npos) << undone.errors;
    EXPECT_EQ(undone.errors.find("not there"), std::string::npos) << undone.errors;
  }
  const auto undone = run({"undo", "5"});  // is about somebody else
  EXPECT_NE(undone.errors.find(told), std::string::npos) << undone.errors;
  const auto shown = run({"show", "Ann"}).output;
  EXPECT_NE(shown.find("Ann"), std::string::npos) << shown;
  EXPECT_EQ(shown.find("one"), std::string::npos) << shown;
}

TEST(StoreProblems, AReadOnlyFolderIsTold) {
  if (::geteuid() == 0) GTEST_SKIP() << "permissions do not bind this user";
  const auto folder = temporaryPath("sealed");
  std::filesystem::create_directory(folder);
  std::filesystem::permissions(
      folder, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  const auto result = run({"--store", (folder / "new.db").string(), "accounts", "add", "Work"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.errors.find((folder / "new.db").string()), std::string::npos) << result.errors;

  makeStore();
  std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
  std::filesystem::copy_file(support::StoreEnvironment::instance().contactStore(),
                             folder / "copy.db");
  std::filesystem::permissions(folder / "copy.db", std::filesystem::perms::owner_read);
  std::filesystem::permissions(
      folder, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
  for (const auto* command : {"accounts", "check"}) {
    const auto copy = run({"--store", (folder / "copy.db").string(), command});
    EXPECT_EQ(copy.exitCode, 1);
    EXPECT_NE(copy.errors.find("a store is used where it and its folder can be written"),
              std::string::npos)
        << copy.errors;
  }
}

TEST(StoreProblems, AStoreThatAnotherProcessWritesForLongIsBusy) {
  makeStore();
  const auto path = support::StoreEnvironment::instance().contactStore().string();
  sqlite::Connection other(path, sqlite::Connection::Mode::ReadWrite);
  const sqlite::Transaction writing(other);
  const auto cards = temporaryFile("one.vcf", card({"N:;Ann;;;", "FN:Ann"})).string();
  const auto result = run({"import", cards});
  EXPECT_EQ(result.exitCode, 5) << result.errors;
  EXPECT_NE(result.errors.find(path), std::string::npos) << result.errors;
  EXPECT_EQ(runJson({"persons"}), Json::array());
}

// Closing such a file after reading it would drop the locks that the program itself holds on it.
TEST(StoreProblems, NoCommandReadsAFileOfTheStoreItself) {
  run({"add-person", "_local", "name=Ann"});
  run({"tag", "Ann", "--add", "T"});
  const auto& environment = support::StoreEnvironment::instance();
  const auto store = environment.contactStore();
  std::filesystem::create_symlink(store, temporaryPath("link"));
  std::filesystem::create_hard_link(store, temporaryPath("twin"));
  std::filesystem::create_hard_link(environment.tagStore(), temporaryPath("twin of the tags"));
  const std::vector<std::string> names = {
      store,
      temporaryPath("link"),
      temporaryPath("twin"),
      std::filesystem::relative(store),
      store.string() + "-wal",
      store.string() + "-shm",
      environment.tagStore(),
      temporaryPath("twin of the tags"),
  };
  const auto good = temporaryFile("good.vcf", card({"N:;Ben;;;", "FN:Ben"})).string();
  for (const auto& name : names) {
    for (const auto& command :
         std::vector<std::vector<std::string>>{{"import", good, name},
                                               {"photo", "Ann", "--set", name},
                                               {"restore", "_local", name, "--force"}}) {
      const auto result = run(command);
      EXPECT_EQ(result.exitCode, 1) << command[0];
      EXPECT_EQ(result.errors, "oxcontacts: " + name + ": is a file of the store itself\n");
    }
  }
  const auto fromInput = runShell("\"$OX\" import /dev/stdin <" + store.string());
  EXPECT_EQ(fromInput.exitCode, 1);
  EXPECT_EQ(fromInput.errors, "oxcontacts: /dev/stdin: is a file of the store itself\n");
  EXPECT_EQ(personIds().size(), 1U);
  EXPECT_EQ(run({"check"}).output, "sound\n");
}

TEST(StoreProblems, CheckFindsADamagedByte) {
  const auto cards = temporaryFile("one.vcf", card({"N:;Ann;;;", "FN:Ann", "NOTE:fingerbone"}));
  ASSERT_EQ(run({"import", cards}).exitCode, 0);
  EXPECT_EQ(runJson({"check"}), Json::parse(R"({"ok":true,"problems":[]})"));
  const auto store = support::StoreEnvironment::instance().contactStore();
  auto bytes = fileBytes(store);
  const auto place = bytes.find("fingerbone");
  ASSERT_NE(place, std::string::npos);
  bytes[place] = 'F';
  temporaryFile("contacts.db", bytes);
  EXPECT_EQ(run({"check"}).exitCode, 1);
  const auto report = runJson({"check"});
  EXPECT_EQ(report["ok"], false);
  EXPECT_EQ(report["problems"].size(), 1U) << report;
}

TEST(Output, ThatCannotBeWrittenIsNoSuccess) {
  makeStore();
  const auto result = runShell("\"$OX\" accounts >/dev/full");
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "oxcontacts: the output could not be written\n");
}

TEST(Output, IsColouredOnlyWhenAskedForAndNeverSteersTheTerminal) {
  const auto cards = temporaryFile("one.vcf", card({"N:;A\x1b[2Jnn;;;", "FN:A\x1b[2Jnn"}));
  run({"import", cards});
  EXPECT_EQ(run({"--color", "always", "accounts"}).output.substr(0, 9), "\x1b[1mNAME ");
  EXPECT_EQ(run({"persons"}).output.find('\x1b'), std::string::npos);
  EXPECT_EQ(runJson({"persons"})[0]["displayName"], "A\x1b[2Jnn");
  const auto help = run({"--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_NE(help.output.find("4 not found, 5 busy (try later), 130 interrupted"),
            std::string::npos);
}

}  // namespace
}  // namespace ox::program_tests
