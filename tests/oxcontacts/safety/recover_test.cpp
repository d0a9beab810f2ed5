// recover: what a damaged store still holds, as a new one.
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

using support::temporaryFile;
using support::temporaryPath;

// Two persons, one of them tagged and in a group.
void fillStore() {
  const auto cards =
      temporaryFile("two.vcf", card({"N:Berg;Ada;;;", "FN:Ada Berg", "NOTE:marker"}) +
                                   card({"N:Holm;Per;;;", "FN:Per Holm"}));
  run({"import", cards.string()});
  run({"add-group", "_local", "Team"});
  run({"group-add", "Team", "Ada Berg"});
  run({"tag", "Ada Berg", "--add", "family", "--add", "work"});
}

// The store as it lies there, with its log and tags; the result is its path.
std::string copyOfStore() {
  auto path = temporaryPath("damaged.db").string();
  const auto& environment = support::StoreEnvironment::instance();
  for (const auto* ending : {"", "-wal"}) {
    const auto from = environment.contactStore().string() + ending;
    if (std::filesystem::exists(from)) std::filesystem::copy_file(from, path + ending);
    const auto tags = environment.tagStore().string() + ending;
    if (std::filesystem::exists(tags)) std::filesystem::copy_file(tags, path + ".tags" + ending);
  }
  return path;
}

std::string exported(const std::string& store) {
  const auto file = temporaryPath("export.vcf").string();
  ::setenv("OX_TAG_STORE", (store + ".tags").c_str(), 1);
  EXPECT_EQ(run({"--store", store, "export", "-o", file}).exitCode, 0);
  EXPECT_EQ(run({"--store", store, "tag", "Ada Berg"}).output, "family\nwork\n");
  EXPECT_EQ(run({"--store", store, "check"}).output, "sound\n");
  return support::fileBytes(file);
}

TEST(Recover, BringsBackPersonsGroupsAndTags) {
  fillStore();
  const auto from = copyOfStore();
  const auto to = temporaryPath("recovered.db").string();
  const auto result = run({"recover", from, "-o", to});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "oxcontacts: recovered 1 group, 2 persons, 0 pictures, 2 tags into " + to + "\n");
  EXPECT_EQ(exported(to), exported(from));
}

TEST(Recover, NamesWhatIsLostAndEndsWithThree) {
  fillStore();
  run({"photo", "Ada Berg", "--set", temporaryFile("p.gif", std::string(900, 'x')).string()});
  const auto from = copyOfStore();
  // The values of one person.
  for (const auto* ending : {"", "-wal"}) {
    auto bytes = support::fileBytes(from + ending);
    for (auto at = bytes.find("marker"); at != std::string::npos; at = bytes.find("marker", at)) {
      bytes.replace(at, 6, "ruined");
    }
    std::ofstream(from + ending, std::ios::binary) << bytes;
  }
  const auto to = temporaryPath("recovered.db").string();
  const auto result = run({"recover", from, "-o", to});
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_NE(result.output.find(":ABPerson: "), std::string::npos) << result.output;
  EXPECT_EQ(personIds().size(), 2U);
  const auto report = run({"--store", to, "persons"});
  EXPECT_NE(report.output.find("Per Holm"), std::string::npos);
  EXPECT_EQ(report.output.find("Ada"), std::string::npos);
}

TEST(Recover, WritesOverNothingAndMakesNoStore) {
  const auto from = temporaryFile("damaged.db", std::string(8'192, 'x')).string();
  const auto there = temporaryFile("there.db", "mine").string();
  const auto refused = run({"recover", from, "-o", there});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.errors, "oxcontacts: " + there + ": is there already\n");
  EXPECT_EQ(support::fileBytes(there), "mine");
  EXPECT_EQ(
      run({"recover", temporaryPath("none.db").string(), "-o", temporaryPath("new.db").string()})
          .exitCode,
      1);
  EXPECT_FALSE(std::filesystem::exists(temporaryPath("new.db")));
  EXPECT_FALSE(std::filesystem::exists(support::StoreEnvironment::instance().contactStore()));
}

}  // namespace
}  // namespace ox::program_tests
