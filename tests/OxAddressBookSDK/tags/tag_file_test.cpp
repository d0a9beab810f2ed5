#include "ox/OxAddressBookSDK/tags/tag_file.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <tuple>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/tags/tag_table.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "tests/support/growth.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

std::string makeDatabase(const char* name, const std::string& sql) {
  auto path = support::temporaryPath(name).string();
  sqlite::Connection(path, sqlite::Connection::Mode::ReadWriteCreate).execute(sql.c_str());
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
      makeDatabase("newer", "PRAGMA application_id = 0x4F785447; PRAGMA user_version = 4");
  for (const auto& [path, kind, reason] :
       {std::tuple{foreign, FailureKind::NotAStore, ": not a tag file"},
        std::tuple{otherId, FailureKind::NotAStore, ": not a tag file"},
        std::tuple{newer, FailureKind::NewerSchema,
                   ": a tag file of version 4, this program knows 3"}}) {
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

TEST(TagFile, RefusesASchemaThatIsNotItsOwnByName) {
  for (const auto& [sql, reason] :
       {std::pair{"CREATE TRIGGER t BEFORE INSERT ON tag BEGIN DELETE FROM tag; END",
                  ": the trigger \"t\" does not belong there"},
        std::pair{"DROP TABLE followed; CREATE VIEW followed AS SELECT 1",
                  ": the view \"followed\" does not belong there"},
        std::pair{"ALTER TABLE tag ADD COLUMN more",
                  ": the table \"tag\" is not made as it should be"},
        std::pair{"DROP INDEX tag_person",
                  ": the index \"tag_person\" is missing; `check --repair` makes it anew"}}) {
    const auto path = support::temporaryFile("own.tags", "").string();
    TagFile(path).add("book", "person", "tag");
    sqlite::Connection(path, sqlite::Connection::Mode::ReadWrite).execute(sql);
    const auto before = support::fileBytes(path);
    EXPECT_EQ(openingFails(path, FailureKind::Corrupt), reason);
    EXPECT_EQ(support::fileBytes(path), before);
    std::filesystem::remove(path);
  }
}

TEST(TagFile, DamagedRowIsNotBelievedAmongAllTags) {
  const auto path = support::temporaryFile("tags.db", "").string();
  {
    TagFile file(path);
    file.add("book", "ann", "colleague");
    file.add("book", "ben", "friend");
  }
  EXPECT_EQ(allTagsIn(path).size(), 2U);
  auto bytes = support::fileBytes(path);
  for (auto at = bytes.find("colleague"); at != bytes.npos; at = bytes.find("colleague")) {
    bytes[at] = 'b';
  }
  support::temporaryFile("tags.db", bytes);
  EXPECT_THROW(TagFile(path).tags("book", "ann"), FailureError);
  EXPECT_THROW(allTagsIn(path), FailureError);
}

// Whoever writes with another tool can give such a row the right sum.
TEST(TagFile, ATagThatIsNoTextIsDamaged) {
  const auto path = support::temporaryFile("tags.db", "").string();
  TagFile file(path);
  file.add("book", "ann", "colleague");
  sqlite::Connection other(path, sqlite::Connection::Mode::ReadWrite);
  other.execute("INSERT INTO tag VALUES('book', 'ann', CAST('colleague' AS BLOB), 2)");
  EXPECT_EQ(other.queryInteger("SELECT count(*) FROM tag WHERE sound"), 2);
  EXPECT_THROW(file.tags("book", "ann"), FailureError);
  EXPECT_THROW(allTagsIn(path), FailureError);
  EXPECT_EQ(file.problems(), TagFile::Tags{"a tag of ann is damaged"});
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
    file.follow("store", {{1, "one", {{"book", "q", {"d"}, {}}}}}, [] { return 1; });
  }
  TagFile file(path);
  EXPECT_EQ(file.tags("book", "q"), TagFile::Tags());
  EXPECT_EQ(file.managersOf("q"), std::vector<std::string>());
  EXPECT_EQ(file.problems(), TagFile::Tags());
  EXPECT_EQ(sqlite::Connection(path, sqlite::Connection::Mode::ReadOnly)
                .queryInteger("PRAGMA user_version"),
            3);
}

// Of version 2, whose rows carried no checksum.
TEST(TagFile, OfVersion2KeepsItsTagsAndWhatItHasFollowed) {
  const auto path = makeDatabase("version2", std::string(kVersion1) + R"(
  CREATE TABLE followed (
    store BLOB PRIMARY KEY,
    number INTEGER NOT NULL,
    act BLOB NOT NULL
  ) WITHOUT ROWID;
  CREATE INDEX tag_person ON tag (person);
  INSERT INTO followed VALUES (CAST('store' AS BLOB), 7, CAST('seven' AS BLOB));
  PRAGMA user_version = 2;
)");
  TagFile file(path);
  EXPECT_EQ(file.tags("book", "p"), (TagFile::Tags{"a", "b"}));
  EXPECT_EQ(file.lastFollowed("store"), 7);
  EXPECT_EQ(file.problems(), TagFile::Tags());
}

TEST(TagFile, NeverBelievesAFlippedByte) {
  const auto path = support::temporaryFile("tags.db", "").string();
  {
    TagFile file(path);
    for (const auto* tag : {"red", "green", "blue"}) file.add("book", "person", tag);
    file.follow("store", {{4, "four", {{"book", "other", {}, {"chess"}}}}}, [] { return 4; });
  }
  const auto bytes = support::fileBytes(path);
  const TagFile::Tags expected = {"red", "green", "blue"};
  const auto isTold = [&] {
    try {
      TagFile file(path);
      const bool isRight = file.tags("book", "person") == expected &&
                           file.tags("book", "other") == TagFile::Tags{"chess"} &&
                           file.lastFollowed("store") == 4;
      return isRight || !file.problems().empty();
    } catch (const std::exception&) {
      return true;
    }
  };
  const auto page = bytes.size() - bytes.size() % 4096;
  for (std::size_t place = 0; place < page; ++place) {
    // What nothing uses is 0.
    if (bytes[place] == 0 && place % 16 != 0) continue;
    auto flipped = bytes;
    flipped[place] = static_cast<char>(flipped[place] ^ 1);
    for (const auto* ending : {"-wal", "-shm"}) std::filesystem::remove(path + ending);
    support::temporaryFile("tags.db", flipped);
    EXPECT_TRUE(isTold()) << place;
  }
}

class FollowingTagFile : public ::testing::Test {
 protected:
  static TagAct adds(std::int64_t number, const char* name, const char* tag) {
    return {number, name, {{"book", "p", {}, {tag}}}};
  }
  void follow(const char* store, const std::vector<TagAct>& acts, std::int64_t last) {
    file_.follow(store, acts, [last] { return last; });
  }
  TagFile::Tags tags() { return file_.tags("book", "p"); }

  TagFile file_{support::temporaryFile("following", "").string()};
};

TEST_F(FollowingTagFile, MakesEachActOnce) {
  follow("store", {adds(3, "three", "a"), adds(5, "five", "b")}, 9);
  EXPECT_EQ(tags(), (TagFile::Tags{"a", "b"}));
  file_.remove("book", "p", "a");
  follow("store", {adds(3, "three", "a"), adds(5, "five", "b")}, 9);
  follow("store", {}, 9);
  EXPECT_EQ(tags(), (TagFile::Tags{"b"}));
  follow("store", {adds(3, "three", "a"), adds(5, "five", "b"), adds(7, "seven", "c")}, 9);
  EXPECT_EQ(tags(), (TagFile::Tags{"b", "c"}));
  follow("another store", {adds(3, "three", "d")}, 3);
  EXPECT_EQ(tags(), (TagFile::Tags{"b", "c", "d"}));
}

TEST_F(FollowingTagFile, LeavesAloneWhatOthersHaveFollowedBeyond) {
  follow("store", {adds(3, "three", "a")}, 3);
  follow("store", {adds(3, "three", "a"), {4, "four", {{"book", "p", {"a"}, {}}}}}, 4);
  // By somebody who looked before the fourth act; he is asked for the last act only now.
  follow("store", {adds(3, "three", "a")}, 4);
  EXPECT_EQ(tags(), TagFile::Tags());
}

TEST_F(FollowingTagFile, MergesEachChangeWithWhatIsThere) {
  file_.replace("book", "p", {"a", "x", "b"});
  file_.replace("book", "q", {"y"});
  follow("store",
         {{1,
           "one",
           {{"book", "p", {"a", "b"}, {"b", "c"}},
            {"book", "q", {"y"}, {}},
            {"book", "r", {"gone"}, {}},
            {"other", "p", {}, {"z"}}}}},
         1);
  EXPECT_EQ(tags(), (TagFile::Tags{"x", "b", "c"}));
  EXPECT_EQ(file_.tags("book", "q"), TagFile::Tags());
  EXPECT_EQ(file_.tags("book", "r"), TagFile::Tags());
  EXPECT_EQ(file_.managersOf("p"), (std::vector<std::string>{"book", "other"}));
}

TEST_F(FollowingTagFile, FollowsAStoreThatWasPutBack) {
  follow("store", {adds(9, "nine", "a")}, 9);
  // Back at 4, and its next act.
  follow("store", {adds(5, "five", "b")}, 5);
  EXPECT_EQ(tags(), (TagFile::Tags{"a", "b"}));
  follow("store", {adds(9, "nine", "c")}, 9);
  // Back at 8, and as many acts again.
  follow("store", {adds(9, "another nine", "d")}, 9);
  EXPECT_EQ(tags(), (TagFile::Tags{"a", "b", "c", "d"}));
}

TEST(TagFile, TakesAnEmptyFileForItsOwn) {
  const auto path = support::temporaryFile("empty", "").string();
  TagFile file(path);
  file.replace("book", "p", {"b", "a"});
  EXPECT_EQ(TagFile(path).tags("book", "p"), (TagFile::Tags{"b", "a"}));
}

TagFile::Tags manyTags(std::size_t count) {
  TagFile::Tags tags;
  for (std::size_t i = 0; i < count; ++i) tags.push_back("tag " + std::to_string(i));
  return tags;
}

TEST(TagFile, TakesStepsByTheTagHoweverManyAPersonGets) {
  support::statementsRun();
  TagFile file(support::temporaryFile("many", "").string());
  support::expectLinearGrowth(200, [&](std::size_t count) {
    const auto person = "person with " + std::to_string(count);
    const auto before = support::stepsTaken();
    file.replace("book", person, manyTags(count));
    return support::stepsTaken() - before;
  });
  EXPECT_EQ(file.tags("book", "person with 800"), manyTags(800));
  file.add("book", "person with 800", "one more");
  file.add("book", "person with 800", "tag 5");
  auto expected = manyTags(800);
  expected.emplace_back("one more");
  EXPECT_EQ(file.tags("book", "person with 800"), expected);
}

TEST(TagFile, FollowsManyTagsInStepsByTheTag) {
  support::statementsRun();
  TagFile file(support::temporaryFile("followed", "").string());
  std::int64_t number = 0;
  support::expectLinearGrowth(200, [&](std::size_t count) {
    const auto person = "person with " + std::to_string(count);
    const auto before = support::stepsTaken();
    ++number;
    file.follow("store", {{number, "act", {{"book", person, {}, manyTags(count)}}}},
                [] { return std::int64_t{0}; });
    return support::stepsTaken() - before;
  });
  EXPECT_EQ(file.tags("book", "person with 800"), manyTags(800));
}

}  // namespace
}  // namespace ox
