#include "ox/platform/store/committed/content_cache.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/base/store_location.hpp"
#include "ox/platform/store/store_source.hpp"
#include "tests/support/statement_count.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

using support::statementsRun;
using support::StoreBuilder;

constexpr auto kPerson = RecordKind::Person;

// Every third of so many persons has a picture; each takes about a thousand bytes in the store.
RecordKeys buildPersons(std::size_t count) {
  statementsRun();
  SaveRequest request;
  for (std::size_t i = 0; i < count; ++i) {
    NewRecord record;
    record.key = RecordKey::of("p" + std::to_string(i));
    record.container = "_local";
    record.properties.set(property_id::kFirst, Object("P" + std::to_string(i)));
    record.properties.set(property_id::kNote, Object(std::string(900, 'n')));
    if (i % 3 == 0) record.image = makeData(std::string(900, static_cast<char>('a' + i % 26)));
    request.additions.push_back(std::move(record));
  }
  EXPECT_TRUE(contactSource().execute(request)) << request.reason;
  return contactSource().records(kPerson);
}

template <typename Question>
std::uint64_t asked(const Question& question) {
  const auto before = statementsRun();
  question();
  return statementsRun() - before;
}

Text noteOf(const RecordKey& key) {
  const auto value = contactSource().value(key, property_id::kNote);
  const auto* object = std::get_if<Object>(&value);
  return object != nullptr && object->text() != nullptr ? Text(*object->text()) : Text();
}

TEST(ReadAhead, GivesMoreEachTimeToWhoeverWalksTheRecords) {
  const auto keys = buildPersons(2000);
  std::size_t pictures = 0;
  const auto walked = asked([&] {
    for (const auto& key : keys) {
      ASSERT_EQ(noteOf(key)->size(), 900U);
      const auto picture = contactSource().imageData(key);
      if (picture) ++pictures;
    }
  });
  EXPECT_EQ(pictures, 667U);
  // Of the values one, then 64 KiB, then twice as much each time; of the pictures likewise.
  EXPECT_EQ(walked, 6U + 5U);
}

TEST(ReadAhead, AsksForOneRecordWhereNobodyWalks) {
  const auto keys = buildPersons(200);
  EXPECT_EQ(noteOf(keys[150])->size(), 900U);
  EXPECT_EQ(noteOf(keys[100])->size(), 900U);
  EXPECT_EQ(asked([&] { noteOf(keys[101]); }), 1U);
  EXPECT_EQ(asked([&] { noteOf(keys[102]); }), 0U) << "read ahead with the one before";
  EXPECT_EQ(asked([&] { noteOf(keys[99]); }), 1U);
}

TEST(ReadAhead, KnowsWhoHasNoPicture) {
  const auto keys = buildPersons(9);
  for (const auto& key : keys) noteOf(key);
  EXPECT_EQ(asked([&] { EXPECT_EQ(contactSource().imageData(keys[1]), nullptr); }), 0U);
  contactSource().setImageData(keys[1], makeData("new"));
  EXPECT_TRUE(contactSource().save().done);
  EXPECT_EQ(*contactSource().imageData(keys[1]), "new");
  contactSource().setImageData(keys[0], nullptr);
  EXPECT_TRUE(contactSource().save().done);
  EXPECT_EQ(contactSource().imageData(keys[0]), nullptr);
}

TEST(ReadAhead, FollowsWhatOthersDoToPictures) {
  const auto keys = buildPersons(9);
  const auto elsewhere = openStoreSource(contactStorePath());
  const auto pictures = [&] {
    contactSource().moment();  // a look
    std::string text;
    for (const auto& key : {keys[0], keys[1], keys[3]}) {
      noteOf(key);
      const auto picture = contactSource().imageData(key);
      text += picture ? picture->substr(0, 1) : "-";
    }
    return text;
  };
  EXPECT_EQ(pictures(), "a-d");
  elsewhere->setImageData(keys[0], makeData("x"));
  elsewhere->setImageData(keys[1], makeData("y"));
  elsewhere->setImageData(keys[3], nullptr);
  ASSERT_TRUE(elsewhere->save().done);
  EXPECT_EQ(pictures(), "xy-");
  elsewhere->remove(keys[0], kPerson);
  ASSERT_TRUE(elsewhere->save().done);
  EXPECT_EQ(pictures(), "-y-");
}

TEST(ReadAhead, LeavesADamagedPictureToWhoeverAsksForIt) {
  const auto keys = buildPersons(12);
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE image SET data = x'00' WHERE id = 3");
  std::string text;
  for (const auto& key : keys) {
    try {
      const auto picture = contactSource().imageData(key);
      if (picture) text += picture->substr(0, 1);
    } catch (const ImageReadError&) {
      text += "!";
    }
  }
  EXPECT_EQ(text, "ad!j");
}

TEST(Save, AsksForTheValuesOfAllItsRecordsAtOnce) {
  auto keys = buildPersons(100);
  const auto other = openStoreSource(contactStorePath());
  for (const auto& key : keys) {
    ASSERT_TRUE(other->setValue(key, kPerson, property_id::kFirst, Object("new")));
  }
  // Everything is forgotten by a change of the file that the journal does not tell.
  sqlite::Connection(support::StoreEnvironment::instance().contactStore().string(),
                     sqlite::Connection::Mode::ReadWrite)
      .execute("UPDATE content SET card_uid = 'u' WHERE record = 1");
  const auto all = asked([&] { ASSERT_TRUE(other->save().done); });
  // Two rows are written for each: its values and its line in the journal.
  EXPECT_LE(all, 200U + 20U);
  EXPECT_EQ(std::get<Object>(contactSource().value(keys[99], property_id::kFirst)), Object("new"));
}

}  // namespace
}  // namespace ox
