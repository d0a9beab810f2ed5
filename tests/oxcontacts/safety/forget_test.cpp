#include <filesystem>
#include <gtest/gtest.h>

#include "ox/base/replacement_file.hpp"
#include "ox/images/image_codec.hpp"
#include "tests/images/picture_files.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/oxcontacts/store_content.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::program_tests {
namespace {

namespace fs = std::filesystem;

// The files under the test's folder, but for those named, that hold one of these words.
std::string filesWith(const std::vector<std::string>& words, const std::string& butFor) {
  std::string found;
  for (const auto& entry :
       fs::recursive_directory_iterator(support::StoreEnvironment::instance().folder())) {
    if (!entry.is_regular_file() || entry.path().filename() == butFor) continue;
    const auto bytes = support::fileBytes(entry.path());
    for (const auto& word : words) {
      if (bytes.find(word) != std::string::npos) {
        found += entry.path().filename().string() + " holds " + word + "\n";
      }
    }
  }
  return found;
}

const std::vector<std::string> kHers = {"Wilhelmina", "Quartermaine",     "555-0199",
                                        "555-0142",   "allergic to bees", "fencing"};

void fillStore() {
  const auto file = support::temporaryFile(
      "her.vcf",
      card({"UID:u-w", "N:Quartermaine;Wilhelmina;;;", "TEL:555-0199", "NOTE:allergic to bees"}) +
          card({"N:Ray;Ben;;;", "TEL:1"}));
  run({"import", file.string()});
  run({"add-group", "_local", "Friends"});
  run({"group-add", "Friends", "Wilhelmina Quartermaine", "Ben Ray"});
  run({"tag", "Wilhelmina Quartermaine", "--add", "fencing"});
  run({"set", "Wilhelmina Quartermaine", "phone=555-0142"});
}

TEST(ForgetCommand, LeavesNoByteOfAPersonAnywhere) {
  fillStore();
  const auto book = support::temporaryPath("book").string();
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  run({"add-group", "W", "Team"});
  run({"accounts", "remove", "W", "--force"});  // keeps a copy that she is in
  ASSERT_NE(filesWith(kHers, "her.vcf"), "");
  const auto result = run({"forget", "Wilhelmina Quartermaine"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_NE(result.errors.find("this cannot be taken back"), std::string::npos) << result.errors;
  EXPECT_EQ(filesWith(kHers, "her.vcf"), "");
  EXPECT_EQ(run({"check"}).output, "sound\n");
  EXPECT_EQ(runJson({"persons"}).size(), 1U);
  EXPECT_EQ(runJson({"groups"})[0]["persons"], 1);
  for (const auto& copy : runJson({"copies"})) {
    const std::string path = copy["path"];
    EXPECT_EQ(runJson({"--store", path, "persons"}).size(), 1U);
    EXPECT_EQ(run({"--store", path, "check"}).output, "sound\n");
  }
}

// As a forget leaves it that is killed while it makes its copy.
TEST(ForgetCommand, LeavesNothingOfHerInWhatAKilledProgramHadNotFinished) {
  fillStore();
  const auto copies = support::StoreEnvironment::instance().contactStore().string() + ".copies";
  fs::create_directory(copies);
  support::temporaryFile("contacts.db.copies/20990101T000000.000Z-forget.db.1.new", "Wilhelmina");
  support::temporaryFile("contacts.db.copies/20990101T000000.000Z-forget.db.1.new-wal", "fencing");
  const auto result = run({"forget", "Wilhelmina Quartermaine"});
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(filesWith(kHers, "her.vcf"), "");
}

TEST(ForgetCommand, SaysThatAnotherProgramIsMakingACopy) {
  fillStore();
  const auto copies = support::StoreEnvironment::instance().contactStore().string() + ".copies";
  fs::create_directory(copies);
  const ReplacementFile copy(copies + "/20990101T000000.000Z-restore.db");
  const auto result = run({"forget", "Wilhelmina Quartermaine"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_NE(result.errors.find(copy.path() + ": another program is making this copy; she may be in "
                                             "it"),
            std::string::npos)
      << result.errors;
}

TEST(ForgetCommand, CannotBeTakenBackAndLeavesTheRestOfTheJournal) {
  fillStore();
  run({"set", "Ben Ray", "note=kept"});
  run({"forget", "Wilhelmina Quartermaine"});
  const auto log = runJson({"log"});
  EXPECT_EQ(log[0]["command"], "forget");
  EXPECT_EQ(log[1]["command"], "set 'Ben Ray' note=kept");
  EXPECT_EQ(run({"undo", log[0]["number"].dump()}).exitCode, 1);
  EXPECT_EQ(run({"undo"}).exitCode, 0);  // of what Ben was given
  EXPECT_EQ(runJson({"log", "Ben Ray"})[0]["before"], "kept");
}

TEST(ForgetCommand, ForgetsSomebodyWhoWasRemovedBefore) {
  fillStore();
  run({"remove-person", "Wilhelmina Quartermaine"});
  EXPECT_EQ(run({"forget", "Wilhelmina Quartermaine"}).exitCode, 0);
  EXPECT_EQ(runJson({"trash"}).size(), 0U);
  EXPECT_EQ(filesWith(kHers, "her.vcf"), "");
  EXPECT_EQ(run({"forget", "Wilhelmina Quartermaine"}).exitCode, 4);
}

TEST(CopiesCommand, RestoresACopyAsOneActThatCanBeTakenBack) {
  fillStore();
  run({"accounts", "add", "Work", "--identifier", "W:ABAccount"});
  run({"add-person", "W", "name=Dee", "note=1"});
  run({"tag", "Dee", "--add", "chess"});
  const auto picture =
      support::temporaryFile("p.tiff", *images::encodeTiff(images::patterned(5, 4)));
  run({"photo", "Dee", "--set", picture});
  run({"photo", "Ben Ray", "--set", picture});
  const auto before = storeContent();
  run({"accounts", "remove", "W", "--force"});
  run({"set", "Ben Ray", "note=later"});
  run({"photo", "Ben Ray", "--clear"});
  run({"remove-person", "Wilhelmina Quartermaine"});
  run({"add-person", "_local", "name=Newcomer"});
  run({"rename-group", "Friends", "Foes"});
  const auto after = storeContent();
  const std::string name = runJson({"copies"})[0]["name"];
  EXPECT_EQ(run({"copies", "restore", name}).exitCode, 0);
  EXPECT_EQ(storeContent(), before);
  EXPECT_EQ(run({"check"}).output, "sound\n");
  EXPECT_EQ(runJson({"copies"}).size(), 2U);
  EXPECT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(storeContent(), after);
  const auto none = run({"copies", "restore", "nothing"});
  EXPECT_EQ(none.exitCode, 4);
  EXPECT_EQ(none.errors, "oxcontacts: there is no copy \"nothing\"\n");
}

TEST(LogCommand, KeepsNoMoreThanItIsToldButAlwaysTheLastCommand) {
  run({"add-person", "_local", "name=Ann"});
  for (int i = 0; i < 12; ++i) {
    run({"set", "Ann", "note=" + std::string(100'000, static_cast<char>('a' + i))});
  }
  EXPECT_EQ(runJson({"log"}).size(), 13U);
  EXPECT_EQ(runJson({"log", "--keep-days", "30", "--keep-megabytes", "1"}),
            Json({{"days", 30}, {"megabytes", 1}}));
  const auto log = runJson({"log"});
  EXPECT_LT(log.size(), 8U);
  EXPECT_GE(log.size(), 2U);
  EXPECT_EQ(run({"undo"}).exitCode, 0);
  EXPECT_EQ(run({"check"}).output, "sound\n");
  EXPECT_EQ(run({"log", "--keep-days", "0"}).exitCode, 2);
}

}  // namespace
}  // namespace ox::program_tests
