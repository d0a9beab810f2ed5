#include "ox/platform/store/upkeep/repair.hpp"

#include <filesystem>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/journal/store_journal.hpp"
#include "ox/platform/store/schema/kept_copies.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/platform/store/upkeep/eraser.hpp"
#include "ox/records/property_codec.hpp"
#include "tests/support/damaged_rows.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using support::fileBytes;
using Sentences = std::vector<std::string>;

std::string storePath() {
  return support::temporaryPath("repaired.db").string();
}

void runSql(const std::string& sql) {
  sqlite::Connection file(storePath(), sqlite::Connection::Mode::ReadWrite);
  sqlite3_db_config(file.handle(), SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
  file.execute(sql.c_str());
}

std::string queried(const std::string& sql) {
  return sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadOnly)
      .queryText(sql)
      .value_or("");
}

// What every reader is told: values, pictures, links with their numbers, the journal.
std::string state() {
  return queried(
      "SELECT (SELECT group_concat(hex(uid) || kind || container, ' ') FROM record) || "
      "(SELECT group_concat(record || hex(properties) || ifnull(image, '-'), ' ') FROM content) || "
      "(SELECT group_concat(id || ':' || parent || '>' || child, ' ') FROM link) || "
      "(SELECT group_concat(hex(name) || next_record || next_change, ' ') FROM act)");
}

class Repair : public testing::Test {
 protected:
  Repair() {
    const auto source = openStoreSource(storePath());
    SaveRequest request;
    PropertyBag ann;
    ann.set(property_id::kFirst, Object("Ann"));
    ann.set(property_id::kCardUid, Object("card of Ann"));
    PropertyBag ben;
    ben.set(property_id::kFirst, Object("Ben"));
    PropertyBag friends;
    friends.set(property_id::kGroupName, Object("Friends"));
    request.additions.push_back(
        {RecordKey::of("ann"), RecordKind::Person, "_local", ann, makeData("picture")});
    request.additions.push_back({RecordKey::of("ben"), RecordKind::Person, "_local", ben, {}});
    request.additions.push_back(
        {RecordKey::of("friends"), RecordKind::Group, "_local", friends, {}});
    for (const auto* member : {"ann", "ben"}) {
      request.links.push_back({RecordKey::of("friends"), RecordKey::of(member)});
    }
    EXPECT_TRUE(source->execute(request));
  }

  // Nothing was mended, and nothing of the file was changed.
  static void expectUntouched(const Sentences& left) {
    const auto before = fileBytes(storePath());
    const auto repair = repairStore(storePath());
    EXPECT_EQ(repair.mended, Sentences());
    EXPECT_EQ(repair.left, left);
    EXPECT_EQ(repair.copy, "");
    EXPECT_EQ(pathsOfCopies(storePath()), Sentences());
    EXPECT_TRUE(fileBytes(storePath()) == before);
  }

  static void expectMended(const Sentences& mended) {
    const auto repair = repairStore(storePath());
    EXPECT_EQ(repair.mended, mended);
    EXPECT_EQ(repair.left, Sentences());
    EXPECT_EQ(pathsOfCopies(storePath()), Sentences{repair.copy});
    EXPECT_EQ(storeProblems(storePath()), Sentences());
    EXPECT_EQ(openStoreSource(storePath())->records(RecordKind::Group).size(), 1U);
  }
};

TEST_F(Repair, OfASoundStoreDoesNothing) {
  expectUntouched({});
}

TEST_F(Repair, MakesMissingIndexesAnew) {
  const auto before = state();
  runSql("DROP INDEX link_parent; DROP INDEX content_card_uid");
  expectMended({"made the index content_card_uid anew, which was missing",
                "made the index link_parent anew, which was missing"});
  EXPECT_EQ(state(), before);
}

TEST_F(Repair, KeepsTheStoreAsItWas) {
  runSql("DROP INDEX link_parent");
  const auto repair = repairStore(storePath());
  EXPECT_EQ(storeProblems(repair.copy), Sentences{"the index link_parent is missing"});
}

TEST_F(Repair, LeavesOneOfTwoLinksThatAreTheSame) {
  runSql("DROP INDEX link_child; UPDATE link SET child = 1 WHERE id = 2");
  expectMended({"removed links that stood there twice: 1",
                "made the index link_child anew, which was missing"});
  EXPECT_EQ(queried("SELECT group_concat(id || ':' || child) FROM link"), "1:1");
}

// As if what was written of the index had been lost.
TEST_F(Repair, MakesAnIndexAnewThatLacksRows) {
  const auto before = state();
  runSql(
      "PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql = sql || ' WHERE parent < 0' "
      "WHERE name = 'link_parent'");
  runSql(
      "CREATE TEMP TABLE kept AS SELECT id, parent, child FROM link; DELETE FROM link;"
      "INSERT INTO link(id, parent, child) SELECT * FROM kept; DROP TABLE kept");
  runSql(
      "PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql = "
      "'CREATE INDEX link_parent ON link(parent)' WHERE name = 'link_parent'");
  ASSERT_NE(storeProblems(storePath()), Sentences());
  expectMended({"made the indexes anew, of which one did not agree with its table"});
  EXPECT_EQ(state(), before);
}

// The index of identifiers has the one that the row has lost: whoever makes it anew from the rows
// loses it for good.
TEST_F(Repair, KeepsTheIndexesWhereTheRowOfARecordIsDamaged) {
  const auto whole = fileBytes(storePath());
  const auto isDamaged = [] {
    return queried("SELECT count(*) FROM record NOT INDEXED WHERE sound IS NOT 1") == "1";
  };
  for (auto at = whole.find("ben"); at != whole.npos && !isDamaged();
       at = whole.find("ben", at + 1)) {
    auto bytes = whole;
    bytes[at] = 'x';
    support::temporaryFile("repaired.db", bytes);
  }
  ASSERT_TRUE(isDamaged());
  expectUntouched(storeProblems(storePath()));
  EXPECT_EQ(queried("SELECT group_concat(uid, ' ') FROM (SELECT uid FROM record INDEXED BY "
                    "sqlite_autoindex_record_1 ORDER BY uid)"),
            "ann ben friends");
}

TEST_F(Repair, WorksOutWhatARecordIsFoundBy) {
  const auto before = state();
  runSql(
      "UPDATE content SET fingerprint = 7 WHERE record = 1;"
      "UPDATE content SET card_uid = 'none of hers' WHERE record = 2");
  expectMended(
      {"ann: worked out anew what it is found by; it was written with other values, these "
       "may be older",
       "ben: worked out anew what it is found by"});
  EXPECT_EQ(state(), before);
}

// As if pages of the values had never reached the disk, and the row had.
TEST_F(Repair, TellsOfARowThatWasWrittenWithOtherValues) {
  const auto older = queried("SELECT hex(properties) FROM content WHERE record = 2");
  {
    const auto source = openStoreSource(storePath());
    source->setValue(RecordKey::of("ben"), RecordKind::Person, property_id::kNote, Object("new"));
    ASSERT_TRUE(source->save().done);
  }
  runSql("UPDATE content SET properties = x'" + older + "' WHERE record = 2");
  expectMended(
      {"ben: worked out anew what it is found by; it was written with other values, these "
       "may be older"});
}

// The checksum of the row tells that nothing else of it is damaged.
TEST_F(Repair, WorksOutDamagedBytesThatFollowFromSoundOnes) {
  const auto before = state();
  const auto sound = fileBytes(storePath());
  const std::string uid = "card of Ann";
  int tried = 0;
  for (auto place = sound.find(uid); place != std::string::npos;
       place = sound.find(uid, place + 1)) {
    auto bytes = sound;
    bytes[place] = 'C';
    support::temporaryFile("repaired.db", bytes);
    std::filesystem::remove_all(storePath() + ".copies");
    const auto problems = storeProblems(storePath());
    ASSERT_NE(problems, Sentences());
    const auto repair = repairStore(storePath());
    const bool isInValues =
        bytes.substr(place - 60, 200).find("Ann", 0) != std::string::npos && !repair.left.empty();
    if (isInValues) {
      EXPECT_EQ(repair.left, problems);
      continue;
    }
    ++tried;
    EXPECT_NE(repair.mended, Sentences());
    EXPECT_EQ(repair.left, Sentences()) << place;
    EXPECT_EQ(state(), before);
  }
  EXPECT_EQ(tried, 2) << "the column and its index";
}

TEST_F(Repair, LeavesADamagedRowThatDoesNotFollow) {
  const auto sound = fileBytes(storePath());
  const auto place = sound.find("friends");
  ASSERT_NE(place, std::string::npos);
  auto bytes = sound;
  bytes[place] = 'F';
  support::temporaryFile("repaired.db", bytes);
  const auto problems = storeProblems(storePath());
  ASSERT_NE(problems, Sentences());
  const auto repair = repairStore(storePath());
  EXPECT_NE(repair.left, Sentences());
  EXPECT_EQ(queried("SELECT count(*) FROM link"), "2");
}

TEST_F(Repair, CountsTheRowsOfAccounts) {
  runSql("DELETE FROM sqlite_sequence");
  expectMended({"counted the rows of accounts anew"});
  EXPECT_EQ(queried("SELECT seq FROM sqlite_sequence WHERE name = 'container'"), "1");
}

TEST_F(Repair, RemovesLinksToNowhere) {
  runSql("DELETE FROM content WHERE record = 2; DELETE FROM record WHERE id = 2");
  expectMended({"removed link 2, whose group or member is gone"});
  EXPECT_EQ(queried("SELECT group_concat(id) FROM link"), "1");
}

// The values of somebody whose row is lost may be all that is left of her.
TEST_F(Repair, KeepsLinksToWhoMayBeBroughtBack) {
  runSql("DELETE FROM record WHERE id = 2");
  expectUntouched({"row 2 of link refers to a row of record that is not there",
                   "row 2 of content refers to a row of record that is not there"});
}

TEST_F(Repair, LeavesWhatIsLost) {
  runSql("UPDATE content SET properties = x'00' WHERE record = 2");
  const auto problems = storeProblems(storePath());
  ASSERT_EQ(problems.size(), 1U);
  expectUntouched(problems);
}

TEST_F(Repair, MendsWhatItCanBesideWhatIsLost) {
  runSql("UPDATE content SET properties = x'00' WHERE record = 2; DROP INDEX link_parent");
  const auto repair = repairStore(storePath());
  EXPECT_EQ(repair.mended, Sentences{"made the index link_parent anew, which was missing"});
  EXPECT_EQ(repair.left.size(), 1U);
  EXPECT_EQ(storeProblems(storePath()), repair.left);
}

TEST_F(Repair, TouchesNothingWhereAPageIsDamaged) {
  runSql("DROP INDEX link_parent");
  auto bytes = fileBytes(storePath());
  const auto page = std::stoul(queried("SELECT rootpage FROM sqlite_schema WHERE name = 'record'"));
  bytes.replace((page - 1) * 4096, 8, 8, '\x7F');
  support::temporaryFile("repaired.db", bytes);
  expectUntouched(storeProblems(storePath()));
}

TEST_F(Repair, TouchesNothingWhereTheLogIsDamaged) {
  runSql("DROP INDEX link_parent");
  const auto log = storePath() + "-wal";
  {
    sqlite::Connection file(storePath(), sqlite::Connection::Mode::ReadWrite);
    file.keepLog();
    file.execute("UPDATE container SET name = hex(zeroblob(9000))");
  }
  auto bytes = fileBytes(log);
  ASSERT_GT(bytes.size(), 9000U);
  bytes[6000] = static_cast<char>(bytes[6000] ^ 1);  // of the second page
  support::temporaryFile("repaired.db-wal", bytes);
  expectUntouched(storeProblems(storePath()));
  EXPECT_TRUE(fileBytes(log) == bytes);
}

// A damaged link stands where a sound one does: the index that allows one of both cannot be made.
TEST_F(Repair, MendsTheOthersWhereAnIndexCannotBeMade) {
  runSql("DROP INDEX link_child; DROP INDEX link_parent; DROP INDEX content_card_uid");
  support::writeDamagedRows(storePath(), "UPDATE link SET child = 1 WHERE id = 2");
  const auto repair = repairStore(storePath());
  EXPECT_EQ(repair.mended, (Sentences{"made the index content_card_uid anew, which was missing",
                                      "made the index link_parent anew, which was missing"}));
  EXPECT_EQ(repair.left, (Sentences{"the index link_child is missing",
                                    "row 2 of link is damaged: its checksum differs"}));
  EXPECT_EQ(storeProblems(storePath()), repair.left);
}

// The row has become the twin of another one, and the index tells what it was.
TEST_F(Repair, KeepsTheIndexOfCustomPropertiesWhereARowIsDamaged) {
  runSql("INSERT INTO custom_property(name, type) VALUES('one', 1), ('two', 1)");
  const auto whole = fileBytes(storePath());
  const auto isDamaged = [] {
    return queried("SELECT count(*) FROM custom_property NOT INDEXED WHERE sound IS NOT 1") == "1";
  };
  for (auto at = whole.find("two"); at != whole.npos && !isDamaged();
       at = whole.find("two", at + 1)) {
    auto bytes = whole;
    bytes.replace(at, 3, "one");
    support::temporaryFile("repaired.db", bytes);
  }
  ASSERT_TRUE(isDamaged());
  expectUntouched(storeProblems(storePath()));
}

TEST_F(Repair, OfMoreThanTheCacheHoldsCanBeCopiedWithoutALog) {
  {
    const auto source = openStoreSource(storePath());
    SaveRequest request;
    PropertyBag values;
    values.set(property_id::kNote, Object(std::string(1900, 'n')));
    for (int i = 0; i < 2000; ++i) {
      request.additions.push_back(
          {RecordKey::make(RecordKind::Person), RecordKind::Person, "_local", values, {}});
    }
    ASSERT_TRUE(source->execute(request));
  }
  runSql("PRAGMA journal_mode=DELETE; UPDATE content SET fingerprint = 7 WHERE record > 3");
  const auto repair = repairStore(storePath());
  EXPECT_EQ(repair.mended.size(), 2000U);
  EXPECT_EQ(repair.left, Sentences());
}

TEST_F(Repair, OfACopyThatLacksAnIndexIsNotNeededToReturnToIt) {
  runSql("DROP INDEX link_parent; DROP INDEX link_child");
  const auto copy = repairStore(storePath()).copy;
  const auto before = fileBytes(copy);
  const auto source = openStoreSource(storePath());
  source->remove(RecordKey::of("ann"), RecordKind::Person);
  ASSERT_TRUE(source->save().done);
  EXPECT_TRUE(source->journal().returnToCopy(copy, {}).done);
  EXPECT_EQ(source->records(RecordKind::Person).size(), 2U);
  EXPECT_TRUE(fileBytes(copy) == before);
}

TEST_F(Repair, OfACopyThatLacksAnIndexIsNotNeededToForgetInIt) {
  runSql("DROP INDEX link_parent; DROP INDEX link_child");
  const auto copy = repairStore(storePath()).copy;
  EXPECT_TRUE(eraseRecord(copy, RecordKey::of("ann"), ""));
  EXPECT_EQ(storeProblems(copy), Sentences());
  EXPECT_EQ(fileBytes(copy).find("Ann"), std::string::npos);
}

TEST_F(Repair, ThatCannotKeepACopyChangesNothing) {
  runSql("DROP INDEX link_parent");
  support::temporaryFile("repaired.db.copies", "no folder");
  const auto before = fileBytes(storePath());
  EXPECT_THROW(repairStore(storePath()), StoreError);
  EXPECT_TRUE(fileBytes(storePath()) == before);
  EXPECT_EQ(storeProblems(storePath()), Sentences{"the index link_parent is missing"});
}

}  // namespace
}  // namespace ox
