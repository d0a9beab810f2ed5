// The program on a full disk: files may not grow beyond a limit, or are /dev/full.
#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

#include "ox/platform/store/store_source.hpp"
#include "tests/faults/store_state.hpp"
#include "tests/faults/trouble.hpp"
#include "tests/oxcontacts/program.hpp"
#include "tests/support/store_environment.hpp"

namespace ox::faults {
namespace {

using program_tests::ProcessResult;
using program_tests::runShell;

// Runs `$OX` with these arguments, no file growing beyond that many KiB.
ProcessResult runLimited(int kibibytes, const std::string& arguments) {
  return runShell("ulimit -f " + std::to_string(2 * kibibytes) + "; cd " +
                  support::StoreEnvironment::instance().folder().string() + "; exec $OX " +
                  arguments);
}

ProcessResult runUnlimited(const std::string& arguments) {
  return runShell("cd " + support::StoreEnvironment::instance().folder().string() + "; exec $OX " +
                  arguments);
}

// Without the logs, which whoever reads a file of the store leaves beside it.
std::set<std::string> filesThere() {
  std::set<std::string> names;
  for (const auto& entry :
       std::filesystem::directory_iterator(support::StoreEnvironment::instance().folder())) {
    const auto name = entry.path().filename().string();
    if (!name.ends_with("-wal") && !name.ends_with("-shm")) names.insert(name);
  }
  return names;
}

// One person whose values and picture take more than the limits below.
void fillStore() {
  const std::string note(60'000, 'n');
  const std::string photo(80'000, 'A');
  support::temporaryFile("ann.vcf", program_tests::card({"FN:Ann", "N:;Ann;;;", "NOTE:" + note,
                                                         "PHOTO;ENCODING=b;TYPE=JPEG:" + photo}));
  ASSERT_EQ(runUnlimited("import ann.vcf").exitCode, 0);
  ASSERT_EQ(runUnlimited("tag Ann --add work").exitCode, 0);
}

TEST(FullDisk, KeepsTheFileThatTheProgramWouldReplace) {
  fillStore();
  std::string bad;
  for (int i = 0; i < 400; ++i) bad += "BEGIN:VCARD\r\nN:;Ben;;;\r\nEND:VCARD\r\n";
  support::temporaryFile("bad.vcf", bad);
  struct Row {
    const char* command;
    int done;  // the exit code where there is room
  };
  const std::array rows = {
      Row{"backup _local file", 3},  // the picture cannot be decoded
      Row{"backup --all file", 0},
      Row{"export -o file", 0},
      Row{"export --format host-vcard -o file", 0},
      Row{"photo Ann --get file", 0},
      Row{"import --strict bad.vcf --report file", 3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.command);
    const auto file = support::temporaryFile("file", "old");
    const auto before = filesThere();
    const auto state = committedState(storePath());
    const auto failed = runLimited(40, row.command);
    EXPECT_EQ(failed.exitCode, 1) << failed.errors;
    EXPECT_NE(failed.errors.find("file: "), std::string::npos) << failed.errors;
    EXPECT_EQ(support::fileBytes(file), "old");
    EXPECT_EQ(filesThere(), before);
    EXPECT_EQ(committedState(storePath()), state);
    const auto done = runUnlimited(row.command);
    EXPECT_EQ(done.exitCode, row.done) << done.errors;
    EXPECT_GT(std::filesystem::file_size(file), 40U << 10U);
  }
}

TEST(FullDisk, ThatTakesTheOutputIsTold) {
  fillStore();
  support::temporaryFile("bad.vcf", "BEGIN:VCARD\r\nN:;Ben;;;\r\nEND:VCARD\r\n");
  for (const auto* command : {"persons", "--json persons", "show Ann", "accounts", "books",
                              "export", "export -o /dev/full", "photo Ann --get /dev/full",
                              "tag Ann", "--json check", "import --strict bad.vcf"}) {
    const auto result = runUnlimited(std::string(command) + " > /dev/full");
    EXPECT_EQ(result.exitCode, 1) << command << result.errors;
    EXPECT_NE(result.errors, "") << command;
  }
}

bool holdsEveryLineOf(const std::string& state, const std::string& before) {
  std::istringstream lines(before);
  for (std::string line; std::getline(lines, line);) {
    if (state.find(line + '\n') == std::string::npos) return false;
  }
  return true;
}

int kibibytesOfLog() {
  return static_cast<int>(std::filesystem::file_size(storePath() + "-wal") / 1024);
}

// Each command with more and more room behind what the store's log takes, until it has enough.
TEST(FullDisk, ThatStopsACommandLosesNothing) {
  fillStore();
  ASSERT_EQ(runUnlimited("add-group _local Friends").exitCode, 0);
  ASSERT_EQ(runUnlimited("backup _local book").exitCode, 3);
  const auto card =
      program_tests::card({"FN:Ben", "N:;Ben;;;", "NOTE:" + std::string(20'000, 'n')});
  support::temporaryFile("ben.vcf", card + card);
  const auto holder = openStoreSource(storePath());  // keeps the log where it is
  ASSERT_EQ(holder->containers().size(), 1U);
  struct Row {
    const char* command;
    const char*
        added;  // how it tells that it could not take back what it added; null: it adds none
  };
  const std::array rows = {
      Row{"set Ann nickname=Annie", nullptr},
      Row{"add-person _local name=Cid", "this is left without them: "},
      Row{"group-add Friends Ann", nullptr},
      Row{"remove-person Cid", nullptr},
      Row{"accounts add Work", nullptr},
      Row{"import ben.vcf", ""},
      Row{"copy Ben --to Work", "this is left without them: "},
      Row{"restore _local book", "; the store as it was is in "},
  };
  for (const auto& row : rows) {
    int failed = 0;
    for (const int room : {0, 4, 9, 14, 30, 120, 2'000}) {
      SCOPED_TRACE(std::string(row.command) + " in " + std::to_string(room) + " KiB");
      const auto before = committedState(storePath());
      const auto result = runLimited(kibibytesOfLog() + room, row.command);
      EXPECT_EQ(problemsOf(storePath()), "");
      if (result.exitCode == 0) break;
      ++failed;
      EXPECT_EQ(result.exitCode, 1);
      EXPECT_NE(result.errors, "");
      const auto after = committedState(storePath());
      EXPECT_TRUE(holdsEveryLineOf(after, before)) << after;
      if (after == before) continue;
      ASSERT_NE(row.added, nullptr);
      EXPECT_NE(result.errors.find(row.added), std::string::npos) << result.errors;
    }
    EXPECT_EQ(runUnlimited("tag Ann").output, "work\n");
    EXPECT_GE(failed, 2) << row.command;
    EXPECT_LT(failed, 7) << row.command;
    ASSERT_FALSE(HasFailure());
  }
}

}  // namespace
}  // namespace ox::faults
