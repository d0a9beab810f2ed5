#include "ox/OxAddressBookSDK/tags/tag_file.hpp"

#include <gtest/gtest.h>
#include <string>
#include <tuple>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

std::string makeDatabase(const char* name, const char* sql) {
  auto path = support::temporaryPath(name).string();
  sqlite::Connection(path, sqlite::Connection::Mode::ReadWriteCreate).execute(sql);
  return path;
}

// Why the file is refused, and of what kind the refusal is.
std::string openingFails(const std::string& path, FailureKind kind) {
  try {
    const TagFile file(path);
  } catch (const FailureError& error) {
    EXPECT_EQ(error.kind(), kind);
    EXPECT_EQ(error.subject(), path);
    return std::string(error.what()).substr(path.size());
  }
  return "opened";
}

TEST(TagFile, RefusesWhatIsNoTagFileOfItsVersionAndLeavesItAlone) {
  const auto foreign = makeDatabase("foreign", "CREATE TABLE tag (manager, person, tag, position)");
  const auto otherId = makeDatabase("other", "PRAGMA application_id = 7");
  const auto newer =
      makeDatabase("newer", "PRAGMA application_id = 0x4F785447; PRAGMA user_version = 2");
  for (const auto& [path, kind, reason] :
       {std::tuple{foreign, FailureKind::NotAStore, ": not a tag file"},
        std::tuple{otherId, FailureKind::NotAStore, ": not a tag file"},
        std::tuple{newer, FailureKind::NewerSchema,
                   ": a tag file of version 2, this program knows 1"}}) {
    const auto before = support::fileBytes(path);
    EXPECT_EQ(openingFails(path, kind), reason);
    EXPECT_EQ(support::fileBytes(path), before);
  }
}

TEST(TagFile, FailsSilentlyButNoticedOnAFileThatIsNoDatabase) {
  const failures::Watch watch;
  const auto path = support::StoreEnvironment::instance().tagStore();
  const std::string bytes(5000, 'x');
  support::temporaryFile(path.filename().string(), bytes);
  const auto manager = OxTagManager::tagManagerWithID("book");
  EXPECT_EQ(manager->tagsByPersonID("p"), std::nullopt);
  manager->addPersonID_forTag("p", "x");
  EXPECT_EQ(manager->tagsByPersonID("p"), std::nullopt);
  EXPECT_EQ(watch.counts().failures, 3U);
  EXPECT_EQ(watch.counts().refusals, 0U);
  EXPECT_EQ(watch.lastReason(), "tags: file is not a database");
  EXPECT_EQ(OxTagManager::problems().size(), 1U);
  EXPECT_EQ(support::fileBytes(path), bytes);
}

TEST(TagFile, ReportsADamagedPageAndAnswersMissing) {
  const failures::Watch watch;
  const auto path = support::StoreEnvironment::instance().tagStore().string();
  {
    support::temporaryFile("tags.db", "");
    TagFile file(path);
    for (int i = 0; i < 2000; ++i) file.add("book", "person " + std::to_string(i), "tag");
    EXPECT_EQ(file.problems(), TagFile::Tags());
  }
  auto bytes = support::fileBytes(path);
  ASSERT_GT(bytes.size(), 5U * 4096U);
  bytes.replace(4096, bytes.size() - 4096, bytes.size() - 4096, '\x5A');
  support::temporaryFile("tags.db", bytes);
  EXPECT_EQ(OxTagManager::tagManagerWithID("book")->tagsByPersonID("person 5"), std::nullopt);
  EXPECT_EQ(watch.counts().failures, 1U);
  EXPECT_FALSE(OxTagManager::problems().empty());
}

TEST(TagFile, TakesAnEmptyFileForItsOwn) {
  const auto path = support::temporaryFile("empty", "").string();
  TagFile file(path);
  file.replace("book", "p", {"b", "a"});
  EXPECT_EQ(TagFile(path).tags("book", "p"), (TagFile::Tags{"b", "a"}));
}

}  // namespace
}  // namespace ox
