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
      makeDatabase("newer", "PRAGMA application_id = 0x4F785447; PRAGMA user_version = 3");
  for (const auto& [path, kind, reason] :
       {std::tuple{foreign, FailureKind::NotAStore, ": not a tag file"},
        std::tuple{otherId, FailureKind::NotAStore, ": not a tag file"},
        std::tuple{newer, FailureKind::NewerSchema,
                   ": a tag file of version 3, this program knows 2"}}) {
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

// As files were before they told which acts they have followed.
constexpr const char* kVersion1 = R"(
  PRAGMA journal_mode = WAL;
  CREATE TABLE tag (
    manager TEXT NOT NULL,
    person TEXT NOT NULL,
    tag TEXT NOT NULL,
    position INTEGER NOT NULL,
    PRIMARY KEY (manager, person, tag)
  ) WITHOUT ROWID;
  PRAGMA application_id = 0x4F785447;
  PRAGMA user_version = 1;
  INSERT INTO tag VALUES ('book', 'p', 'b', 2), ('book', 'p', 'a', 1), ('other', 'p', 'c', 1),
                         ('book', 'q', 'd', 1);
)";

TEST(TagFile, OfVersion1KeepsItsTagsAndFollowsFromThenOn) {
  const auto path = makeDatabase("version1", kVersion1);
  {
    TagFile file(path);
    EXPECT_EQ(file.tags("book", "p"), (TagFile::Tags{"a", "b"}));
    EXPECT_EQ(file.managersOf("p"), (std::vector<std::string>{"book", "other"}));
    file.follow("store", 1, {{1, "one", {{"book", "q", {"d"}, {}}}}});
  }
  TagFile file(path);
  EXPECT_EQ(file.tags("book", "q"), TagFile::Tags());
  EXPECT_EQ(file.managersOf("q"), std::vector<std::string>());
  EXPECT_EQ(file.problems(), TagFile::Tags());
  EXPECT_EQ(sqlite::Connection(path, sqlite::Connection::Mode::ReadOnly)
                .queryInteger("PRAGMA user_version"),
            2);
}

class FollowingTagFile : public ::testing::Test {
 protected:
  static TagAct adds(std::int64_t number, const char* name, const char* tag) {
    return {number, name, {{"book", "p", {}, {tag}}}};
  }
  TagFile::Tags tags() { return file_.tags("book", "p"); }

  TagFile file_{support::temporaryFile("following", "").string()};
};

TEST_F(FollowingTagFile, MakesEachActOnce) {
  file_.follow("store", 9, {adds(3, "three", "a"), adds(5, "five", "b")});
  EXPECT_EQ(tags(), (TagFile::Tags{"a", "b"}));
  file_.remove("book", "p", "a");
  file_.follow("store", 9, {adds(3, "three", "a"), adds(5, "five", "b")});
  file_.follow("store", 9, {});
  EXPECT_EQ(tags(), (TagFile::Tags{"b"}));
  file_.follow("store", 9, {adds(3, "three", "a"), adds(5, "five", "b"), adds(7, "seven", "c")});
  EXPECT_EQ(tags(), (TagFile::Tags{"b", "c"}));
  file_.follow("another store", 3, {adds(3, "three", "d")});
  EXPECT_EQ(tags(), (TagFile::Tags{"b", "c", "d"}));
}

TEST_F(FollowingTagFile, MergesEachChangeWithWhatIsThere) {
  file_.replace("book", "p", {"a", "x", "b"});
  file_.replace("book", "q", {"y"});
  file_.follow("store", 1,
               {{1,
                 "one",
                 {{"book", "p", {"a", "b"}, {"b", "c"}},
                  {"book", "q", {"y"}, {}},
                  {"book", "r", {"gone"}, {}},
                  {"other", "p", {}, {"z"}}}}});
  EXPECT_EQ(tags(), (TagFile::Tags{"x", "b", "c"}));
  EXPECT_EQ(file_.tags("book", "q"), TagFile::Tags());
  EXPECT_EQ(file_.tags("book", "r"), TagFile::Tags());
  EXPECT_EQ(file_.managersOf("p"), (std::vector<std::string>{"book", "other"}));
}

TEST_F(FollowingTagFile, FollowsAStoreThatWasPutBack) {
  file_.follow("store", 9, {adds(9, "nine", "a")});
  // Back at 4, and its next act.
  file_.follow("store", 5, {adds(5, "five", "b")});
  EXPECT_EQ(tags(), (TagFile::Tags{"a", "b"}));
  file_.follow("store", 9, {adds(9, "nine", "c")});
  // Back at 8, and as many acts again.
  file_.follow("store", 9, {adds(9, "another nine", "d")});
  EXPECT_EQ(tags(), (TagFile::Tags{"a", "b", "c", "d"}));
}

TEST(TagFile, TakesAnEmptyFileForItsOwn) {
  const auto path = support::temporaryFile("empty", "").string();
  TagFile file(path);
  file.replace("book", "p", {"b", "a"});
  EXPECT_EQ(TagFile(path).tags("book", "p"), (TagFile::Tags{"b", "a"}));
}

}  // namespace
}  // namespace ox
