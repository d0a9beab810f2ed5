#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/sqlite/connection.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

void runSql(const char* sql) {
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite).execute(sql);
}

TEST(RepairCommand, TellsWhatItMendedAndWhereTheStoreAsItWasLies) {
  run({"add-person", "_local", "name=Ann"});
  runSql("DROP INDEX link_parent");
  const auto refused = run({"persons"});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_NE(refused.errors.find("the index \"link_parent\" is missing; `check --repair` makes it "
                                "anew"),
            std::string::npos)
      << refused.errors;
  EXPECT_EQ(run({"check"}).output, "the index link_parent is missing\n");
  const auto result = run({"check", "--repair"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "mended: made the index link_parent anew, which was missing\nsound\n");
  const auto copy = runJson({"copies"})[0];
  EXPECT_EQ(copy["reason"], "repair");
  EXPECT_EQ(result.errors, "oxcontacts: the store as it was: " + std::string(copy["path"]) + "\n");
  EXPECT_EQ(run({"check"}).output, "sound\n");
  EXPECT_EQ(personIds().size(), 1U);
}

TEST(RepairCommand, FailsWhereSomethingIsLostAndLeadsToRecover) {
  run({"add-person", "_local", "name=Ann"});
  runSql("DROP INDEX link_parent; UPDATE content SET properties = x'00'");
  auto report = runJson({"check", "--repair"});
  report["problems"][0] = std::string(report["problems"][0]).substr(36);
  report["copy"] = report["copy"].is_string();
  EXPECT_EQ(report, Json::parse(R"({"ok": false,
      "mended": ["made the index link_parent anew, which was missing"],
      "problems": [":ABPerson: the stored values of a record are cut short"], "copy": true})"));
  const auto result = run({"check", "--repair"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors,
            "oxcontacts: not everything can be mended; `recover` brings what is whole into a new "
            "store\n");
  EXPECT_EQ(runJson({"copies"}).size(), 1U) << "nothing was mended the second time";
}

TEST(RepairCommand, OfASoundStoreSaysSo) {
  run({"add-person", "_local", "name=Ann"});
  EXPECT_EQ(run({"check", "--repair"}).output, "sound\n");
  EXPECT_EQ(runJson({"copies"}), Json::array());
}

TEST(RepairCommand, MakesNoStore) {
  const auto path = support::temporaryPath("none.db").string();
  EXPECT_EQ(run({"--store", path, "check", "--repair"}).exitCode, 1);
  EXPECT_FALSE(std::filesystem::exists(path));
}

}  // namespace
}  // namespace ox::program_tests
