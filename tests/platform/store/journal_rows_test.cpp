// What an act leaves in the journal, and how another handle on the store follows it.
#include <gtest/gtest.h>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/file/check.hpp"
#include "ox/platform/store/process_origin.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/records/property_codec.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

std::string storePath() {
  return support::StoreEnvironment::instance().contactStore().string();
}

// One line for each act: number, what it added, its changes.
std::string journal() {
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadOnly);
  auto rows = store.prepare(
      "SELECT a.number, a.next_record - b.next_record, (SELECT group_concat(c.what || ':' || "
      "ifnull(c.record, '-') || ':' || ifnull(c.other, '-') || ':' || ifnull(c.place, '-'), ' ') "
      "FROM change c WHERE c.id >= b.next_change AND c.id < a.next_change) "
      "FROM act a JOIN act b ON b.number = a.number - 1 ORDER BY a.number");
  std::string text;
  while (rows.step()) {
    text += std::to_string(rows.integer(0)) + " +" + std::to_string(rows.integer(1)) + " " +
            std::string(rows.text(2)) + "\n";
  }
  return text;
}

std::string storedText(const std::string& select) {
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadOnly);
  auto row = store.prepare(select);
  row.step();
  const auto bag = decodeProperties(row.blob(0));
  std::string text;
  for (const auto& [id, value] : bag.entries()) {
    text += property_table::nameOf(id) + "=" + std::get<Object>(value).toText().value_or("(list)") +
            " ";
  }
  return text;
}

PropertyValue text(const char* words) {
  return Object(words);
}

TEST(JournalRows, TellWhatEachActDid) {
  const auto source = openStoreSource(storePath());
  support::StoreBuilder build(*source);
  build.person("p1", {.first = "Ann", .image = makeData("picture")}).group("g1", "Friends");
  build.member("g1", "p1");
  source->setValue(RecordKey::of("p1"), RecordKind::Person, property_id::kFirst, text("Anna"));
  source->setImageData(RecordKey::of("p1"), makeData("other"));
  ASSERT_TRUE(source->save().done);
  source->setValue(RecordKey::of("p1"), RecordKind::Person, property_id::kLast, text("Lee"));
  ASSERT_TRUE(source->save().done);
  source->remove(RecordKey::of("p1"), RecordKind::Person);
  ASSERT_TRUE(source->save().done);
  const auto picture = std::to_string(static_cast<std::int64_t>(checksum64("other")));
  EXPECT_EQ(journal(),
            "1 +1 \n"
            "2 +1 \n"
            "3 +0 5:2:1:1\n"  // linked: group 2, person 1, link 1
            "4 +0 2:1:1:" +
                picture +
                "\n"                        // values and picture; it had picture 1
                "5 +0 1:1:-:-\n"            // values
                "6 +0 6:2:1:1 3:1:2:0\n");  // unlinked, removed with picture 2
  EXPECT_EQ(storedText("SELECT before FROM change WHERE id = 2"), "First=Ann ");
  EXPECT_EQ(storedText("SELECT after FROM change WHERE id = 2"), "First=Anna ");
  EXPECT_EQ(storedText("SELECT before FROM change WHERE id = 3"), "");
  EXPECT_EQ(storedText("SELECT after FROM change WHERE id = 3"), "Last=Lee ");
  EXPECT_EQ(storedText("SELECT before FROM change WHERE id = 5"), "First=Anna Last=Lee ");
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

TEST(JournalRows, NothingWrittenIsNoAct) {
  const auto source = openStoreSource(storePath());
  support::StoreBuilder(*source).person("p1", {.first = "Ann"});
  SaveRequest nothing;
  EXPECT_TRUE(source->execute(nothing));
  source->setValue(RecordKey::of("p1"), RecordKind::Person, property_id::kFirst, text("Ben"));
  source->setValue(RecordKey::of("p1"), RecordKind::Person, property_id::kFirst, text("Ann"));
  EXPECT_TRUE(source->save().done);
  EXPECT_EQ(source->moment().number, 1);
}

TEST(JournalRows, AnotherHandleForgetsOnlyWhatWasTouched) {
  const auto source = openStoreSource(storePath());
  support::StoreBuilder build(*source);
  build.person("p1", {.first = "Ann"}).person("p2", {.first = "Ben"}).group("g1", "Friends");
  const auto other = openStoreSource(storePath());
  const auto valueOf = [&](const char* id) {
    return std::get<Object>(other->value(RecordKey::of(id), property_id::kFirst)).toText();
  };
  EXPECT_EQ(other->records(RecordKind::Person).size(), 2U);
  const auto before = other->committedValues(RecordKey::of("p2"));
  source->setValue(RecordKey::of("p1"), RecordKind::Person, property_id::kFirst, text("Anna"));
  ASSERT_TRUE(source->save().done);
  build.person("p3", {.first = "Cid"}).member("g1", "p3");
  EXPECT_EQ(other->records(RecordKind::Person).size(), 3U);
  EXPECT_EQ(valueOf("p1"), "Anna");
  EXPECT_EQ(valueOf("p3"), "Cid");
  // The very object: it was neither forgotten nor read again.
  EXPECT_EQ(other->committedValues(RecordKey::of("p2")), before);
  EXPECT_EQ(other->children(RecordKey::of("g1"), RecordKind::Person)->size(), 1U);
  source->remove(RecordKey::of("p3"), RecordKind::Person);
  ASSERT_TRUE(source->save().done);
  EXPECT_EQ(other->records(RecordKind::Person).size(), 2U);
  EXPECT_EQ(other->children(RecordKey::of("g1"), RecordKind::Person)->size(), 0U);
}

TEST(JournalRows, WhatAnotherToolCommitsIsSeenAllTheSame) {
  const auto source = openStoreSource(storePath());
  support::StoreBuilder(*source).person("p1").person("p2");
  EXPECT_EQ(source->records(RecordKind::Person).size(), 2U);
  {
    sqlite::Connection tool(storePath(), sqlite::Connection::Mode::ReadWrite);
    tool.execute("PRAGMA foreign_keys=ON; DELETE FROM record WHERE id = 1");
  }
  EXPECT_EQ(source->records(RecordKind::Person).size(), 1U);
}

TEST(JournalRows, AnActBearsItsOrigin) {
  setOrigin({"program", "set Ann", true, std::nullopt});
  const auto source = openStoreSource(storePath());
  support::StoreBuilder(*source).person("p1").person("p2");
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadOnly);
  EXPECT_EQ(store.queryText("SELECT group_concat(program || '/' || command || '/' || together) "
                            "FROM origin"),
            "program/set Ann/1");
  EXPECT_EQ(store.queryInteger("SELECT count(DISTINCT origin) FROM act WHERE number > 0"), 1);
}

TEST(JournalRows, AnActIsDecidedAgainWhenOthersHaveTouchedWhatItRead) {
  const auto first = openStoreSource(storePath());
  support::StoreBuilder(*first).person("p1", {.first = "Ann"});
  const auto second = openStoreSource(storePath());
  const auto key = RecordKey::of("p1");
  first->value(key, property_id::kFirst);
  second->value(key, property_id::kFirst);
  first->setValue(key, RecordKind::Person, property_id::kFirst, text("Anna"));
  second->setValue(key, RecordKind::Person, property_id::kLast, text("Lee"));
  ASSERT_TRUE(first->save().done);
  ASSERT_TRUE(second->save().done);
  EXPECT_EQ(storedText("SELECT properties FROM content"), "First=Anna Last=Lee ");
}

}  // namespace
}  // namespace ox
