#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/store/store_source.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using support::StoreBuilder;

constexpr std::size_t kAll = 1U << 30U;
constexpr auto kPerson = RecordKind::Person;

support::PersonValues cardOf(const std::string& uid, const std::string& name) {
  return {.first = name, .more = {{property_id::kCardUid, Object(uid)}}};
}

std::string namesOf(const std::vector<RecordContent>& contents) {
  std::string text;
  for (const auto& [values, picture] : contents) {
    text += values ? *values->text(property_id::kFirst) : "-";
    if (picture) text += "+" + *picture;
    text += " ";
  }
  return text;
}

// The identifiers of what was found, one group of them for each that was sought.
std::string found(std::string_view container, RecordKind kind,
                  const std::vector<SoughtRecord>& sought) {
  std::string text;
  for (const auto& records : contactSource().matches(container, kind, sought)) {
    for (const auto& record : records) text += record.key.text() + " ";
    text += "| ";
  }
  return text;
}

void runInTheStore(const char* sql) {
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute(sql);
}

TEST(ManyContents, StandInTheOrderOfTheKeysWithThoseThatAreNotThere) {
  StoreBuilder()
      .person("a", {.first = "Ann", .image = makeData("picture")})
      .person("b", {.first = "Ben"})
      .person("c", {.first = "Cy"});
  const std::vector<RecordKey> keys = {RecordKey::of("c"), RecordKey::of("none"),
                                       RecordKey::of("a"), RecordKey::of("c"), RecordKey::of("b")};
  EXPECT_EQ(namesOf(contactSource().committedContents(keys, kAll)), "Cy - Ann+picture Cy Ben ");
  contactSource().recordsIn("_local", kPerson);  // known from now on
  EXPECT_EQ(namesOf(contactSource().committedContents(keys, kAll)), "Cy - Ann+picture Cy Ben ");
  EXPECT_EQ(namesOf(contactSource().committedContents({}, kAll)), "");
}

TEST(ManyContents, EndWhenEnoughBytesHaveComeTogether) {
  const std::string large(1000, 'x');
  StoreBuilder()
      .person("a", {.first = "Ann", .note = large})
      .person("b", {.first = "Ben", .image = makeData(large)})
      .person("c", {.first = "Cy"})
      .person("d", {.first = "Di"});
  std::vector<RecordKey> keys;
  for (const auto* id : {"a", "b", "gone", "c", "d"}) keys.push_back(RecordKey::of(id));
  const auto count = [&](std::size_t bytes) {
    return contactSource().committedContents(keys, bytes).size();
  };
  EXPECT_EQ(count(0), 1U);
  EXPECT_EQ(count(1000), 1U);
  EXPECT_EQ(count(2000), 3U);
  EXPECT_EQ(count(4000), 5U);
}

TEST(ManyContents, EndBeforeADamagedRecordAndThrowAtOne) {
  StoreBuilder()
      .person("a", {.first = "Ann"})
      .person("b", {.first = "Ben"})
      .person("c", {.first = "Cy", .image = makeData("picture")});
  runInTheStore(
      "UPDATE content SET properties = x'00' WHERE record = "
      "(SELECT id FROM record WHERE uid = 'b');"
      "UPDATE image SET data = x'00'");
  const std::vector<RecordKey> keys = {RecordKey::of("a"), RecordKey::of("b"), RecordKey::of("c")};
  auto& source = contactSource();
  EXPECT_EQ(namesOf(source.committedContents(keys, kAll)), "Ann ");
  EXPECT_THROW(source.committedContents(std::span(keys).subspan(1), kAll), DamagedRecord);
  EXPECT_THROW(source.committedContents(std::span(keys).subspan(2), kAll), ImageReadError);
  // One whose row is not there any more is no other case: she had a picture.
  runInTheStore("DELETE FROM image");
  EXPECT_THROW(source.committedContents(std::span(keys).subspan(2), kAll), ImageReadError);
  EXPECT_THROW(source.imageData(RecordKey::of("c")), ImageReadError);
  EXPECT_EQ(source.imageData(RecordKey::of("a")), nullptr);
}

TEST(ManyContents, MayBeDecodedByWhoeverAsksForThem) {
  StoreBuilder()
      .person("a", {.first = "Ann", .image = makeData("picture")})
      .person("b", {.first = "Ben"})
      .person("c", {.first = "Cy"})
      .person("d", {.first = "Di", .image = makeData("picture")});
  runInTheStore(
      "UPDATE content SET properties = x'00' WHERE record = "
      "(SELECT id FROM record WHERE uid = 'b');"
      "UPDATE image SET data = x'00' WHERE id = (SELECT image FROM content WHERE record = "
      "(SELECT id FROM record WHERE uid = 'd'))");
  std::vector<RecordKey> keys;
  for (const auto* id : {"c", "gone", "a", "b", "d"}) keys.push_back(RecordKey::of(id));
  std::string names;
  for (const auto& content : contactSource().encodedContents(keys, kAll)) {
    const auto values = decodedValues(content);
    names += values ? *values->text(property_id::kFirst) : content.values ? "damaged" : "none";
    names += content.picture && values ? "+" + *content.picture + " " : " ";
  }
  EXPECT_EQ(names, "Cy none Ann+picture damaged damaged ");
  EXPECT_EQ(contactSource().encodedContents(keys, 0).size(), 2U);
}

TEST(ManyContents, OfRecordsThatWereRemovedElsewhereAreMissing) {
  const auto elsewhere = openStoreSource(contactStorePath());
  StoreBuilder().person("a", {.first = "Ann"}).person("b", {.first = "Ben"});
  const std::vector<RecordKey> keys = contactSource().recordsIn("_local", kPerson);
  elsewhere->remove(keys[0], kPerson);
  ASSERT_TRUE(elsewhere->save().done);
  EXPECT_EQ(namesOf(contactSource().committedContents(keys, kAll)), "- Ben ");
}

TEST(Matches, AreOfThatContainerAndKindInCreationOrder) {
  StoreBuilder()
      .person("a", cardOf("u1", "Ann"))
      .person("b", cardOf("urn:uuid:u2", "Ben"))
      .person("c", cardOf("u1", "Cy"))
      .person("d", cardOf("urn:uuid:u1", "Di"))
      .container("other:ABAccount", "Other", 3)
      .person("e", cardOf("u3", "Eve"));
  const std::vector<SoughtRecord> sought = {{"u2"}, {"u3"}, {"URN:UUID:u1"}, {" urn:uuid:u2 "},
                                            {"u4"}, {"a"}};
  EXPECT_EQ(found("_local", kPerson, sought), "b | | a c | b | | a | ");
  EXPECT_EQ(found("other", kPerson, sought), "| e | | | | | ");
  EXPECT_EQ(found("_local", RecordKind::Group, sought), "| | | | | | ");
  EXPECT_EQ(found("none", kPerson, sought), "| | | | | | ");
  EXPECT_EQ(found("_local", kPerson, {}), "");
}

// A record that no card gave a UID bears that of its identifier in an export.
TEST(Matches, AreRecordsByTheUidThatAnExportGivesThem) {
  const auto own = RecordKey::make(kPerson);
  StoreBuilder().person(own.text(), {.first = "Ann"}).person("foreign", {.first = "Ben"});
  const auto uid = own.text().substr(0, 36);
  const auto all = own.text() + " | " + own.text() + " | foreign | ";
  const auto urn = "urn:uuid:" + uid;
  EXPECT_EQ(found("_local", kPerson, {{uid}, {urn}, {"foreign"}}), all);
  contactSource().recordsIn("_local", kPerson);  // known from now on
  EXPECT_EQ(found("_local", kPerson, {{uid}, {urn}, {"foreign"}}), all);
}

TEST(Matches, TellTheFingerprintAndFindItAgain) {
  StoreBuilder()
      .person("a", cardOf("u1", "Ann"))
      .person("b", {.first = "Ben"})
      .person("c", {.first = "Ben"});
  const auto fingerprintOf = [](std::string_view uid) {
    return contactSource()
        .matches("_local", kPerson, std::vector<SoughtRecord>{{uid}})
        .at(0)
        .at(0)
        .fingerprint;
  };
  EXPECT_NE(fingerprintOf("u1"), fingerprintOf("b"));
  EXPECT_EQ(fingerprintOf("b"), fingerprintOf("c"));
  EXPECT_EQ(found("_local", kPerson, {{{}, fingerprintOf("b")}, {{}, 1}, {}}), "b c | | | ");
}

TEST(ManyRecords, AreFoundByIdentifierInTheirOrder) {
  const auto own = RecordKey::make(kPerson).text();
  StoreBuilder().person(own).person("a").person("b").group("g", "G");
  const auto book = ABAddressBook::sharedAddressBook();
  const auto namesOf = [&](const std::vector<std::string>& identifiers) {
    std::string text;
    for (const auto& record : book->recordsForUniqueIds(identifiers)) {
      text += record ? *record->uniqueId() + " " : "- ";
    }
    return text;
  };
  const std::vector<std::string> all = {"g", "none", own, "", "b", "a", "g"};
  EXPECT_EQ(namesOf(all), "g - " + own + " - b a g ");
  ASSERT_TRUE(book->removeRecord(book->recordForUniqueId("b")));
  EXPECT_EQ(namesOf(all), "g - " + own + " - - a g ");
  book->people();  // known from now on
  EXPECT_EQ(namesOf(all), "g - " + own + " - - a g ");
  EXPECT_EQ(namesOf({}), "");
  EXPECT_EQ(book->recordsForKeys({RecordKey::of("a"), RecordKey::of("b")}).at(0),
            book->recordForUniqueId("a"));
}

TEST(ManyRecords, AreFoundAndRemovedWithoutAQuestionForEach) {
  support::statementsRun();
  StoreBuilder().persons("p", 100);
  const auto book = ABAddressBook::sharedAddressBook();
  std::vector<std::string> identifiers;
  identifiers.reserve(100);
  for (int i = 0; i < 100; ++i) identifiers.push_back("p" + std::to_string(i));
  auto before = support::statementsRun();
  const auto records = book->recordsForUniqueIds(identifiers);
  EXPECT_EQ(support::statementsRun() - before, 1U);
  book->people();
  before = support::statementsRun();
  for (const auto& record : records) ASSERT_TRUE(book->removeRecord(record));
  // Which accounts take no changes.
  EXPECT_EQ(support::statementsRun() - before, 1U);
  EXPECT_EQ(book->people().size(), 0U);
}

TEST(ManyRecords, AreOneQuestion) {
  support::statementsRun();
  auto builder = StoreBuilder().persons("p", 1000).group("g", "G").group("h", "H");
  for (int i = 0; i < 20; ++i) builder.member("g", "p" + std::to_string(i));
  auto& source = contactSource();
  const std::vector<RecordKey> groups = source.recordsIn("_local", RecordKind::Group);
  const std::vector<RecordKey> keys = source.recordsIn("_local", kPerson);
  std::vector<std::string> uids;
  uids.reserve(keys.size());
  for (const auto& key : keys) uids.push_back(key.text());
  std::vector<SoughtRecord> sought;
  sought.reserve(uids.size());
  for (const auto& uid : uids) sought.push_back({uid});
  const auto asked = [](const auto& question) {
    const auto before = support::statementsRun();
    question();
    return support::statementsRun() - before;
  };
  EXPECT_EQ(asked([&] { EXPECT_EQ(source.committedContents(keys, kAll).size(), 1000U); }), 1U);
  EXPECT_EQ(asked([&] {
              const auto lists = source.committedChildren(groups, kPerson);
              EXPECT_EQ(lists.at(0)->size(), 20U);
              EXPECT_EQ(lists.at(1)->size(), 0U);
            }),
            1U);
  EXPECT_EQ(asked([&] { source.committedChildren(groups, kPerson); }), 0U) << "they are known";
  // By the UID, by its other spelling, by the identifier that it may have been made from.
  EXPECT_EQ(asked([&] { EXPECT_EQ(source.matches("_local", kPerson, sought).size(), 1000U); }), 3U);
}

}  // namespace
}  // namespace ox
