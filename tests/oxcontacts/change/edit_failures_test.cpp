#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/log_without_room.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::LogWithoutRoom;

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

std::string tagPath() {
  return support::StoreEnvironment::instance().tagStore().string();
}

// Runs the program with no room in the logs that a LogWithoutRoom has filled.
ProcessResult runLimited(const std::vector<std::string>& arguments) {
  return support::runProcess(LogWithoutRoom::limited(programCommand(arguments)));
}

std::string namesNow() {
  std::string names;
  for (const auto& person : runJson({"persons"})) names += person["displayName"].dump() + " ";
  return names;
}

TEST(FailedSave, OfARemovalKeepsTheTags) {
  run({"add-person", "_local", "name=Ann"});
  run({"tag", "Ann", "--add", "sailing"});
  const LogWithoutRoom full(storePath());
  const auto result = runLimited({"remove-person", "Ann", "--json"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find("nothing was saved: "), std::string::npos) << result.errors;
  EXPECT_EQ(run({"tag", "Ann"}).output, "sailing\n");
}

TEST(FailedSave, LeavesNoPersonOrGroupBehind) {
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  run({"add-person", "_local", "name=Ann"});
  run({"tag", "Ann", "--add", "sailing"});
  run({"add-group", "_local", "Friends"});
  const LogWithoutRoom full(storePath());
  const std::vector<std::vector<std::string>> commands = {
      {"add-person", "_local", "name=Ben"},
      {"copy", "Ann", "Ann", "--to", "iCloud"},
      {"copy", "Ann", "--to", "_local"},
      {"add-group", "_local", "Family"},
      {"add-group", "_local", "Family", "--under", "Friends"},
      {"set", "Ann", "note=x"},
      {"rename-group", "Friends", "Family"},
  };
  for (const auto& command : commands) {
    const auto result = runLimited(command);
    EXPECT_EQ(result.exitCode, 1) << Json(command);
    EXPECT_NE(result.errors.find("nothing was saved: "), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("disk I/O error"), std::string::npos) << result.errors;
    EXPECT_EQ(namesNow(), "\"Ann\" ") << Json(command);
    EXPECT_EQ(runJson({"groups"}).size(), 1U) << Json(command);
  }
  EXPECT_EQ(runJson({"groups"})[0]["displayName"], "Friends");
  sqlite::Connection tags(tagPath(), sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(tags.queryInteger("SELECT count(DISTINCT person) FROM tag"), 1);
}

TEST(FailedSave, LeavesNothingThatWouldHaveToBeRemovedAgain) {
  makeStore();
  const LogWithoutRoom full(storePath());
  const auto result = runLimited({"add-person", "_local", "name=Ann"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find("nothing was saved: "), std::string::npos) << result.errors;
  EXPECT_EQ(runJson({"persons"}).size(), 0U);
}

TEST(FailedSave, PrintsNothing) {
  run({"add-person", "_local", "name=Ann"});
  run({"add-group", "_local", "Friends"});
  run({"group-add", "Friends", "Ann"});
  const LogWithoutRoom full(storePath());
  const std::vector<std::vector<std::string>> commands = {
      {"remove-group", "Friends"},        {"rename-group", "Friends", "Family"},
      {"group-remove", "Friends", "Ann"}, {"remove-person", "Ann"},
      {"set", "Ann", "note=x"},
  };
  for (auto command : commands) {
    command.insert(command.begin(), "--json");
    const auto result = runLimited(command);
    EXPECT_EQ(result.exitCode, 1) << Json(command);
    EXPECT_EQ(result.output, "") << Json(command);
  }
  EXPECT_EQ(runJson({"groups"})[0]["persons"], 1);
}

TEST(FailedCopy, MakesNoPersonOfARecordThatCannotBeRead) {
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  run({"add-person", "_local", "name=Ann"});
  run({"add-person", "_local", "name=Ben"});
  const auto ids = personIds();
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadWrite);
  store.execute("UPDATE content SET properties = x'00' WHERE record = 2");
  const auto result = run({"copy", ids.at("Ann"), ids.at("Ben"), "--to", "iCloud"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.errors.find("nothing was saved: "), std::string::npos) << result.errors;
  EXPECT_EQ(result.errors.find("copied"), std::string::npos) << result.errors;
  EXPECT_EQ(store.queryInteger("SELECT count(*) FROM record"), 2);
}

TEST(FailedTag, IsMadeByTheNextCommandThatCan) {
  run({"add-person", "_local", "name=Ann"});
  run({"tag", "Ann", "--add", "a", "--add", "b"});
  {
    const LogWithoutRoom full(tagPath());
    const auto failed = runLimited({"tag", "Ann", "--remove", "a", "--add", "c"});
    EXPECT_EQ(failed.exitCode, 1);
    EXPECT_NE(
        failed.errors.find("the contacts are saved, but not all of the tags: tags: disk I/O error"),
        std::string::npos)
        << failed.errors;
    EXPECT_EQ(runLimited({"tag", "Ann"}).output, "a\nb\n");
  }
  EXPECT_EQ(run({"tag", "Ann"}).output, "b\nc\n");
}

TEST(FailedTag, IsNoneWhereTheStoreRefusesIt) {
  run({"add-person", "_local", "name=Ann"});
  run({"tag", "Ann", "--add", "a"});
  const LogWithoutRoom full(storePath());
  const auto failed = runLimited({"tag", "Ann", "--remove", "a", "--add", "c"});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_NE(failed.errors.find("nothing was saved: "), std::string::npos) << failed.errors;
  EXPECT_EQ(run({"tag", "Ann"}).output, "a\n");
}

TEST(RefusedAssignment, LeavesTheOthersUndone) {
  // A value of another type than the store knows the property by is refused by the store alone.
  makeStore();
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("INSERT INTO custom_property VALUES('OxMacOtherProperty', 1)");
  const auto refused = run({"add-person", "_local", "name=Ann", "other=x"});
  EXPECT_EQ(refused.exitCode, 1) << refused.errors;
  EXPECT_NE(refused.errors.find("nothing was saved: "), std::string::npos) << refused.errors;
  EXPECT_EQ(namesNow(), "");
  run({"add-person", "_local", "name=Ann"});
  EXPECT_EQ(run({"set", "Ann", "note=new", "other=x"}).exitCode, 1);
  EXPECT_EQ(runJson({"show", "Ann"}).dump().find("OxProPertyNote"), std::string::npos);
}

}  // namespace
}  // namespace ox::program_tests
