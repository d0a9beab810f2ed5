#include "ox/platform/store/schema/kept_copies.hpp"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ox/base/replacement_file.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

namespace fs = std::filesystem;

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

void writeTags(const std::string& content) {
  support::temporaryFile("tags.db", content);
}

void makeTags() {
  sqlite::Connection(support::StoreEnvironment::instance().tagStore().string(),
                     sqlite::Connection::Mode::ReadWriteCreate)
      .execute("CREATE TABLE tag(t); INSERT INTO tag VALUES('chess')");
}

// What lies in the folder of copies, without the times.
std::vector<std::string> filesWithoutTimes() {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(storePath() + ".copies")) {
    const auto name = entry.path().filename().string();
    names.push_back(name.substr(std::min(name.size(), name.find('-'))));
  }
  std::ranges::sort(names);
  return names;
}

TEST(KeptCopies, AreStoresWithTheirTagsInAFolderForThisUserAlone) {
  support::StoreBuilder().persons("p", 3).group("g", "Friends");
  makeTags();
  keepCopy(storePath(), "restore");
  EXPECT_EQ(filesWithoutTimes(), (std::vector<std::string>{"-restore.db", "-restore.db.tags"}));
  const auto copies = pathsOfCopies(storePath());
  ASSERT_EQ(copies.size(), 1U);
  EXPECT_EQ(countsOfStore(copies[0]), (RecordCounts{1, 3}));
  sqlite::Connection tags(copies[0] + ".tags", sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(tags.queryText("SELECT t FROM tag"), Text("chess"));
  for (const auto& [path, mode] :
       {std::pair(storePath() + ".copies", 0700U), std::pair(copies[0], 0600U)}) {
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, mode) << path;
  }
}

TEST(KeptCopies, LeaveTheOldestWhenThereAreMoreThanThree) {
  support::StoreBuilder().persons("p", 1);
  makeTags();
  for (const auto* reason : {"a", "b", "c", "d"}) keepCopy(storePath(), reason);
  EXPECT_EQ(filesWithoutTimes(), (std::vector<std::string>{"-b.db", "-b.db.tags", "-c.db",
                                                           "-c.db.tags", "-d.db", "-d.db.tags"}));
  const auto copies = pathsOfCopies(storePath());
  ASSERT_EQ(copies.size(), 3U);
  EXPECT_TRUE(copies[0].ends_with("-d.db")) << "the newest comes first: " << copies[0];
}

// The clock was ahead once, or was put back.
TEST(KeptCopies, StayWhenOlderOnesAreNamedLater) {
  support::StoreBuilder().persons("p", 1);
  const fs::path folder = storePath() + ".copies";
  fs::create_directory(folder);
  for (const auto* day : {"01", "02", "03"}) {
    copyStore(storePath(), (folder / ("20990101T0000" + std::string(day) + ".000Z-x.db")).string());
  }
  keepCopy(storePath(), "restore");
  const auto copies = pathsOfCopies(storePath());
  EXPECT_TRUE(
      std::ranges::any_of(copies, [](const auto& path) { return path.ends_with("-restore.db"); }));
}

TEST(KeptCopies, SweepWhatAKilledProcessLeftButNothingThatIsInTheMaking) {
  support::StoreBuilder().persons("p", 1);
  const fs::path folder = storePath() + ".copies";
  keepCopy(storePath(), "a");
  for (const auto* name :
       {"20200101T000000.000Z-x.db.tags", "20200101T000000.000Z-x.db-wal",
        "20200101T000000.000Z-y.db.1.new", "20200101T000000.000Z-y.db.1.new-wal",
        "20990101T000000.000Z-z.db.2.new", "20990101T000000.000Z-z.db.3.new-shm"}) {
    support::temporaryFile("contacts.db.copies/" + std::string(name), "x");
  }
  const ReplacementFile inTheMaking((folder / "20200101T000000.000Z-w.db").string());
  support::temporaryFile(
      "contacts.db.copies/" + fs::path(inTheMaking.path()).filename().string() + "-wal", "x");
  EXPECT_EQ(sweepUnfinishedCopies(storePath()), std::vector<std::string>{inTheMaking.path()});
  keepCopy(storePath(), "b");
  keepCopy(storePath(), "c");
  const auto made = "-w.db" + inTheMaking.path().substr(inTheMaking.path().find("-w.db") + 5);
  EXPECT_EQ(filesWithoutTimes(),
            (std::vector<std::string>{"-a.db", "-b.db", "-c.db", made, made + "-wal"}));
}

TEST(KeptCopies, GoWithoutTagsThatAreDamaged) {
  support::StoreBuilder().persons("p", 1);
  writeTags("no database at all, though long enough to be taken for one by its length");
  keepCopy(storePath(), "restore");
  EXPECT_EQ(filesWithoutTimes(), (std::vector<std::string>{"-restore.db"}));
}

TEST(KeptCopies, ThatCannotBeMadeAreAFailureWithTheReason) {
  support::StoreBuilder().persons("p", 1);
  support::temporaryFile("contacts.db.copies", "a file where the folder should be");
  try {
    keepCopy(storePath(), "restore");
    FAIL() << "a copy was made";
  } catch (const StoreError& error) {
    EXPECT_NE(std::string(error.what()).find("Not a directory"), std::string::npos) << error.what();
  }
}

}  // namespace
}  // namespace ox
