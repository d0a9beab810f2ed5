#include <filesystem>
#include <gtest/gtest.h>

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
  run({"accounts"});
  std::filesystem::create_directory(support::temporaryPath("contacts.db.copies"));
  temporaryFile("contacts.db.copies/20260102T030405.678Z-restore.db", "no store");
  const auto copies = runJson({"copies"});
  ASSERT_EQ(copies.size(), 1U) << copies;
  EXPECT_EQ(copies[0]["time"], "2026-01-02T03:04:05Z");
  EXPECT_EQ(copies[0]["persons"], nullptr);
  EXPECT_EQ(copies[0]["bytes"], 8);
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
