#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;

TEST(CopiesCommand, ListsWhatIsKeptTheNewestFirst) {
  EXPECT_EQ(run({"--json", "copies"}).output, "[]\n");
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  run({"add-person", "W", "name=Ann"});
  run({"add-group", "W", "Friends"});
  EXPECT_EQ(run({"accounts", "remove", "W", "--force"}).exitCode, 0);
  const auto copies = runJson({"copies"});
  ASSERT_EQ(copies.size(), 1U) << copies;
  EXPECT_EQ(copies[0]["reason"], "accounts-remove");
  EXPECT_EQ(copies[0]["persons"], 1);
  EXPECT_EQ(copies[0]["groups"], 1);
  const std::string path = copies[0]["path"];
  EXPECT_EQ(copies[0]["bytes"], std::filesystem::file_size(path));
  EXPECT_EQ(runJson({"--store", path, "persons"})[0]["displayName"], "Ann");
  const std::string time = copies[0]["time"];
  EXPECT_NE(run({"copies"}).output.find(time + "  accounts-remove        1       1"),
            std::string::npos)
      << run({"copies"}).output;
}

TEST(CopiesCommand, ListsOneThatCannotBeReadWithoutItsCounts) {
  makeStore();
  std::filesystem::create_directory(support::temporaryPath("contacts.db.copies"));
  temporaryFile("contacts.db.copies/20260102T030405.678Z-restore.db", "no store");
  const auto copies = runJson({"copies"});
  ASSERT_EQ(copies.size(), 1U) << copies;
  EXPECT_EQ(copies[0]["time"], "2026-01-02T03:04:05Z");
  EXPECT_EQ(copies[0]["persons"], nullptr);
  EXPECT_EQ(copies[0]["bytes"], 8);
}

TEST(CopiesCommand, AreThereWhenTheStoreIsGone) {
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  run({"add-person", "W", "name=Ann"});
  ASSERT_EQ(run({"accounts", "remove", "W", "--force"}).exitCode, 0);
  for (const auto* ending : {"", "-wal", "-shm", "-synced", ".tags", ".find"}) {
    std::filesystem::remove(support::temporaryPath(std::string("contacts.db") + ending));
  }
  const auto copies = runJson({"copies"});
  ASSERT_EQ(copies.size(), 1U) << copies;
  EXPECT_FALSE(std::filesystem::exists(support::temporaryPath("contacts.db")));
  const std::string name = copies[0]["name"];
  const auto restored = run({"copies", "restore", name});
  EXPECT_EQ(restored.exitCode, 0) << restored.errors;
  EXPECT_EQ(runJson({"persons"})[0]["displayName"], "Ann");
}

// What is damaged now is what the copy is wanted for.
TEST(CopiesCommand, RestoresWhatIsDamagedNow) {
  const std::string id = runJson({"add-person", "_local", "name=Ann", "phone=+1"})["ID"];
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  run({"add-person", "W", "name=Ben"});
  run({"accounts", "remove", "W", "--force"});
  const std::string name = runJson({"copies"})[0]["name"];
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE content SET properties = x'01020304050607080900' WHERE record = 1");
  const auto result = run({"copies", "restore", name});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(runJson({"show", id})["displayName"], "Ann");
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
}

// A copy that went its own way, made before everything that the journal still tells: in its third
// row is somebody else.
TEST(CopiesCommand, GivesNobodyTheRowOfAnotherRecord) {
  run({"add-person", "_local", "name=Ann"});
  run({"add-person", "_local", "name=Ben"});
  std::filesystem::create_directory(support::temporaryPath("contacts.db.copies"));
  const auto copy =
      support::temporaryPath("contacts.db.copies/20260102T030405.678Z-restore.db").string();
  ASSERT_EQ(run({"backup", "--all", copy}).exitCode, 0);
  run({"--store", copy, "add-person", "_local", "name=Cid"});
  for (const auto* name : {"Dee", "Eve", "Fay", "Gus"}) {
    run({"add-person", "_local", "name=" + std::string(name)});
  }
  run({"remove-person", "Dee"});
  {
    sqlite::Connection store(support::StoreEnvironment::instance().contactStore().string(),
                             sqlite::Connection::Mode::ReadWrite);
    store.execute(
        "DELETE FROM change WHERE id < (SELECT next_change FROM act ORDER BY number DESC LIMIT 1 "
        "OFFSET 1); DELETE FROM act WHERE number < (SELECT max(number) - 1 FROM act)");
  }
  const auto result = run({"copies", "restore", "20260102T030405.678Z-restore"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(runJson({"persons"}).size(), 3U);
  const auto log = runJson({"log", "Cid"});
  ASSERT_EQ(log.size(), 1U) << log;
  EXPECT_EQ(log[0]["what"], "added");
}

// The copy is made to hold the groups the other way round.
TEST(UndoCommand, TurnsGroupsBackThatWereTurnedAround) {
  run({"add-group", "_local", "A"});
  run({"add-group", "_local", "B", "--under", "A"});
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  run({"add-person", "W", "name=Ben"});
  run({"accounts", "remove", "W", "--force"});
  const auto before = run({"groups"}).output;
  const auto copy = runJson({"copies"})[0];
  sqlite::Connection(copy["path"], sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE link SET parent = child, child = parent");
  EXPECT_EQ(run({"copies", "restore", copy["name"]}).exitCode, 0);
  EXPECT_NE(run({"groups"}).output, before);
  const auto undone = run({"undo"});
  EXPECT_EQ(undone.exitCode, 0) << undone.errors;
  EXPECT_EQ(run({"groups"}).output, before);
}

TEST(RemoveAccountCommand, RemovesNothingWhenNoCopyCanBeKept) {
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  run({"add-person", "W", "name=Ann"});
  temporaryFile("contacts.db.copies", "a file where the folder should be");
  const auto result = run({"accounts", "remove", "W", "--force"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.errors.find("Not a directory"), std::string::npos) << result.errors;
  EXPECT_EQ(runJson({"persons"}).size(), 1U);
}

}  // namespace
}  // namespace ox::program_tests
