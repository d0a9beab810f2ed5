#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/damaged_rows.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

// Names of the groups with their own members and those below, in "Friends 0/1 (Close 1/1)" form.
std::string treeOf(const Json& groups) {
  std::string text;
  for (const auto& group : groups) {
    text += (text.empty() ? "" : " ") + group["displayName"].get<std::string>() + " " +
            group["persons"].dump() + "/" + group["includePersons"].dump();
    if (!group["subGroups"].empty()) text += " (" + treeOf(group["subGroups"]) + ")";
  }
  return text;
}

void makeFriends() {
  for (const auto* name : {"name=Ann", "name=Ben"}) run({"add-person", "_local", name});
  run({"add-group", "_local", "Friends"});
  run({"add-group", "On My Mac", "Close", "--under", "Friends"});
}

TEST(GroupCommands, BuildRenameAndRemoveATree) {
  makeFriends();
  const auto family = runJson({"add-group", "_local", "Family", "--under", "Close"});
  EXPECT_EQ(treeOf(Json::array({family})), "Family 0/0");
  EXPECT_EQ(treeOf(runJson({"groups"})), "Friends 0/0 (Close 0/0 (Family 0/0))");
  EXPECT_EQ(treeOf(Json::array({runJson({"rename-group", "Close", "Near"})})),
            "Near 0/0 (Family 0/0)");
  EXPECT_EQ(treeOf(runJson({"groups"})), "Friends 0/0 (Near 0/0 (Family 0/0))");
  EXPECT_EQ(treeOf(Json::array({runJson({"remove-group", "Near"})})), "Near 0/0 (Family 0/0)");
  EXPECT_EQ(treeOf(runJson({"groups"})), "Friends 0/0");
  EXPECT_EQ(run({"remove-group", "Friends"}).exitCode, 0);
  EXPECT_EQ(runJson({"groups"}), Json::array());
  EXPECT_EQ(runJson({"persons"}).size(), 2U);
  EXPECT_EQ(run({"check"}).output, "sound\n");
}

TEST(GroupCommands, RemoveAGroupAloneWhenAskedTo) {
  makeFriends();
  run({"add-group", "_local", "Family", "--under", "Close"});
  EXPECT_EQ(run({"remove-group", "Friends", "--alone"}).errors,
            "oxcontacts: removed the group Friends; no person was removed, and what was below it "
            "stays\n");
  EXPECT_EQ(treeOf(runJson({"groups"})), "Close 0/0 (Family 0/0)");
}

// Removed alone, the damaged link goes with its group, and what it led to, if anything, is a group
// by itself.
TEST(GroupCommands, RemoveNoGroupFromWhichNobodyCanTellWhatIsBelowIt) {
  makeFriends();
  run({"add-group", "_local", "Family", "--under", "Close"});
  run({"group-add", "Friends", "Ann"});
  const auto store = support::StoreEnvironment::instance().contactStore().string();
  support::writeDamagedRows(store, "UPDATE link SET id = id WHERE id = 1");
  EXPECT_NE(run({"check"}).output, "sound\n");
  const auto refused = run({"remove-group", "Friends"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_NE(refused.errors.find("oxcontacts: nothing was removed, since what leads to the groups "
                                "below Friends cannot be read (--alone removes it without them): "),
            std::string::npos)
      << refused.errors;
  EXPECT_NE(run({"check"}).output, "sound\n");
  const auto result = run({"remove-group", "Friends", "--alone", "--json"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(Json::parse(result.output)["displayName"], "Friends");
  EXPECT_EQ(treeOf(runJson({"groups"})), "Close 0/0 (Family 0/0)");
  EXPECT_EQ(run({"check"}).output, "sound\n");
}

TEST(GroupCommands, PutPersonsInAndTakeThemOut) {
  makeFriends();
  EXPECT_EQ(run({"group-add", "Friends", "Ann", "Ben"}).errors,
            "oxcontacts: added 2 persons to Friends\n");
  EXPECT_EQ(run({"group-add", "Close", "Ann"}).exitCode, 0);
  EXPECT_EQ(run({"group-add", "Close", "Ann"}).errors, "oxcontacts: added 0 persons to Close\n");
  EXPECT_EQ(treeOf(runJson({"groups"})), "Friends 2/2 (Close 1/1)");

  const auto missing = run({"group-remove", "Close", "Ann", "Ben"});
  EXPECT_EQ(missing.exitCode, 3);
  EXPECT_NE(missing.errors.find("Ben is not in the group Close"), std::string::npos);
  EXPECT_EQ(treeOf(runJson({"groups"})), "Friends 2/2 (Close 0/0)");

  run({"group-add", "Close", "Ann"});
  const auto bar = run({"--progress", "always", "group-remove", "Friends", "Ann", "--recursive"});
  EXPECT_EQ(bar.exitCode, 0);
  EXPECT_NE(bar.errors.find("100 %"), std::string::npos);
  EXPECT_EQ(treeOf(runJson({"groups"})), "Friends 1/1 (Close 0/0)");
}

TEST(GroupCommands, TellWhatTheyCannotDo) {
  makeFriends();
  run({"accounts", "add", "iCloud", "--identifier", "A:ABAccount"});
  run({"add-person", "iCloud", "name=Cy"});
  struct Row {
    std::vector<std::string> arguments;
    int exitCode;
    const char* message;
  };
  const std::vector<Row> rows = {
      {{"group-add", "Friends", "Ann", "Cy"}, 1, "Cy is in another account than the group Friends"},
      {{"group-add", "Nobodies", "Ann"}, 4, "there is no group \"Nobodies\""},
      {{"group-add", "Friends", "Nobody"}, 4, "there is no person \"Nobody\""},
      {{"group-add", "Friends"}, 2, "PERSON is required"},
      {{"add-group", "iCloud", "x", "--under", "Friends"}, 1, "is not in the book \"iCloud\""},
      {{"add-group", "Nowhere", "x"}, 4, "there is no book \"Nowhere\""},
      {{"rename-group", "Friends", ""}, 2, "NAME: must not be empty"},
      {{"remove-group", "Nobodies"}, 4, "there is no group \"Nobodies\""},
  };
  for (const auto& row : rows) {
    const auto result = run(row.arguments);
    EXPECT_EQ(result.exitCode, row.exitCode) << row.message;
    EXPECT_NE(result.errors.find(row.message), std::string::npos) << result.errors;
    EXPECT_EQ(result.output, "") << row.message;
  }
  EXPECT_EQ(treeOf(runJson({"groups"})), "Friends 0/0 (Close 0/0)");
}

}  // namespace
}  // namespace ox::program_tests
