// What an act leaves in the journal, and how another handle on the store follows it.
#include <gtest/gtest.h>

#include "ox/base/checksum.hpp"
#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/process_origin.hpp"
#include "ox/platform/store/store_source.hpp"
#include "ox/platform/store/upkeep/check.hpp"
#include "ox/records/link_list.hpp"
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

std::string storedLinks(const std::string& select) {
  sqlite::Connection store(storePath(), sqlite::Connection::Mode::ReadOnly);
  auto row = store.prepare(select);
  row.step();
  std::string text;
  for (const auto& [child, number] : decodeLinks(row.blob(0))) {
    text += std::to_string(child) + "#" + std::to_string(number) + " ";
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
            "3 +0 5:2:-:-\n"  // linked: group 2
            "4 +0 2:1:1:" +
                picture +
                "\n"                        // values and picture; it had picture 1
                "5 +0 1:1:-:-\n"            // values
                "6 +0 6:2:-:- 3:1:2:0\n");  // unlinked, removed with picture 2
  EXPECT_EQ(storedLinks("SELECT after FROM change WHERE id = 1"), "1#1 ");
  EXPECT_EQ(storedLinks("SELECT before FROM change WHERE id = 4"), "1#1 ");
  EXPECT_EQ(storedText("SELECT before FROM change WHERE id = 2"), "First=Ann ");
  EXPECT_EQ(storedText("SELECT after FROM change WHERE id = 2"), "First=Anna ");
  EXPECT_EQ(storedText("SELECT before FROM change WHERE id = 3"), "");
  EXPECT_EQ(storedText("SELECT after FROM change WHERE id = 3"), "Last=Lee ");
  EXPECT_EQ(storedText("SELECT before FROM change WHERE id = 5"), "First=Anna Last=Lee ");
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

// A row a group, however many come into it or leave it, and each of these a number of its own.
TEST(JournalRows, TellTheLinksOfAGroupInOneRow) {
  const auto source = openStoreSource(storePath());
  support::StoreBuilder build(*source);
  build.person("p1").person("p2").person("p3").group("g1", "One").group("g2", "Two");
  SaveRequest links;
  for (const auto& [group, child] :
       {std::pair{"g1", "p1"}, {"g2", "p2"}, {"g1", "g2"}, {"g2", "p3"}}) {
    links.links.push_back({RecordKey::of(group), RecordKey::of(child)});
  }
  ASSERT_TRUE(source->execute(links)) << links.reason;
  // The link between both is told once.
  source->remove(RecordKey::of("p2"), RecordKind::Person);
  source->remove(RecordKey::of("g1"), RecordKind::Group);
  source->remove(RecordKey::of("g2"), RecordKind::Group);
  ASSERT_TRUE(source->save().done);
  const auto tail = journal();
  EXPECT_EQ(tail.substr(tail.find("6 +0")),
            "6 +0 5:4:-:- 5:5:-:-\n"
            "7 +0 6:5:-:- 6:4:-:- 3:2:-:0 3:4:-:1 3:5:-:1\n");
  const auto linksOf = [](int id, const char* column) {
    return storedLinks("SELECT " + std::string(column) +
                       " FROM change WHERE id = " + std::to_string(id));
  };
  EXPECT_EQ(linksOf(1, "after"), "1#1 5#3 ");
  EXPECT_EQ(linksOf(3, "after"), "2#2 3#4 ");
  EXPECT_EQ(linksOf(5, "before"), "2#2 3#4 ");
  EXPECT_EQ(linksOf(7, "before"), "1#1 5#3 ");
  EXPECT_EQ(storeProblems(storePath()), std::vector<std::string>{});
}

// A damaged number, beyond those that were ever given.
TEST(JournalRows, TellTheLinksOfAnActBesideOneOfAWrongNumber) {
  const auto source = openStoreSource(storePath());
  support::StoreBuilder build(*source);
  build.person("p1").person("p2").person("p3").group("g1", "One").member("g1", "p1");
  sqlite::Connection(storePath(), sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE link SET id = 1000000000");
  SaveRequest links;
  for (const auto* child : {"p1", "p2", "p3"}) {
    links.links.push_back({RecordKey::of("g1"), RecordKey::of(child)});
  }
  ASSERT_TRUE(source->execute(links)) << links.reason;
  EXPECT_EQ(source->children(RecordKey::of("g1"), RecordKind::Person)->size(), 3U);
  EXPECT_EQ(storedLinks("SELECT after FROM change ORDER BY id DESC LIMIT 1"), "2#3 3#4 ");
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
