#include <functional>
#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

// The store of this test refuses something from now on, as a full disk would.
void refuse(const std::string& event) {
  sqlite::Connection store(support::StoreEnvironment::instance().contactStore().string(),
                           sqlite::Connection::Mode::ReadWrite);
  store.execute(("CREATE TRIGGER IF NOT EXISTS refusal" +
                 std::to_string(std::hash<std::string>()(event)) + " BEFORE " + event +
                 " BEGIN SELECT RAISE(ABORT, 'no room'); END")
                    .c_str());
}

void refuseValues() {
  refuse("UPDATE ON content");
  refuse("INSERT ON content");
}

std::string namesNow() {
  std::string names;
  for (const auto& person : runJson({"persons"})) names += person["displayName"].dump() + " ";
  return names;
}

TEST(FailedSave, OfARemovalKeepsTheTags) {
  run({"add-person", "_local", "name=Ann"});
  run({"tag", "Ann", "--add", "sailing"});
  refuse("DELETE ON record");
  const auto result = run({"remove-person", "Ann", "--json"});
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
  refuseValues();
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
    const auto result = run(command);
    EXPECT_EQ(result.exitCode, 1) << Json(command);
    EXPECT_NE(result.errors.find("nothing was saved: "), std::string::npos) << result.errors;
    EXPECT_NE(result.errors.find("no room"), std::string::npos) << result.errors;
    EXPECT_EQ(namesNow(), "\"Ann\" ") << Json(command);
    EXPECT_EQ(runJson({"groups"}).size(), 1U) << Json(command);
  }
  EXPECT_EQ(runJson({"groups"})[0]["displayName"], "Friends");
  sqlite::Connection tags(support::StoreEnvironment::instance().tagStore().string(),
                          sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(tags.queryInteger("SELECT count(DISTINCT person) FROM tag"), 1);
}

TEST(FailedSave, LeavesNothingThatWouldHaveToBeRemovedAgain) {
  run({"accounts"});
  refuseValues();
  refuse("DELETE ON record");
  const auto result = run({"add-person", "_local", "name=Ann"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find("nothing was saved: "), std::string::npos) << result.errors;
  EXPECT_EQ(runJson({"persons"}).size(), 0U);
}

TEST(FailedSave, PrintsNothing) {
  run({"add-person", "_local", "name=Ann"});
  run({"add-group", "_local", "Friends"});
  run({"group-add", "Friends", "Ann"});
  refuseValues();
  refuse("DELETE ON record");
  refuse("DELETE ON link");
  const std::vector<std::vector<std::string>> commands = {
      {"remove-group", "Friends"},        {"rename-group", "Friends", "Family"},
      {"group-remove", "Friends", "Ann"}, {"remove-person", "Ann"},
      {"set", "Ann", "note=x"},
  };
  for (auto command : commands) {
    command.insert(command.begin(), "--json");
    const auto result = run(command);
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
  sqlite::Connection store(support::StoreEnvironment::instance().contactStore().string(),
                           sqlite::Connection::Mode::ReadWrite);
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
  sqlite::Connection tags(support::StoreEnvironment::instance().tagStore().string(),
                          sqlite::Connection::Mode::ReadWrite);
  tags.execute(
      "CREATE TRIGGER refusal BEFORE INSERT ON tag BEGIN SELECT RAISE(ABORT, 'no room'); END");
  const auto failed = run({"tag", "Ann", "--remove", "a", "--add", "c"});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_NE(failed.errors.find("the contacts are saved, but not all of the tags: tags: no room"),
            std::string::npos)
      << failed.errors;
  EXPECT_EQ(run({"tag", "Ann"}).output, "a\nb\n");
  tags.execute("DROP TRIGGER refusal");
  EXPECT_EQ(run({"tag", "Ann"}).output, "b\nc\n");
}

TEST(FailedTag, IsNoneWhereTheStoreRefusesIt) {
  run({"add-person", "_local", "name=Ann"});
  run({"tag", "Ann", "--add", "a"});
  refuse("INSERT ON act");
  const auto failed = run({"tag", "Ann", "--remove", "a", "--add", "c"});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_NE(failed.errors.find("nothing was saved: "), std::string::npos) << failed.errors;
  EXPECT_EQ(run({"tag", "Ann"}).output, "a\n");
}

TEST(RefusedAssignment, LeavesTheOthersUndone) {
  // A value of another type than the store knows the property by is refused by the store alone.
  run({"accounts"});
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
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
