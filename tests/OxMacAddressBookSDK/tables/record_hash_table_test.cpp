#include "ox/OxMacAddressBookSDK/tables/record_hash_table.hpp"

#include <gtest/gtest.h>
#include <random>
#include <unordered_map>

#include "ox/OxMacAddressBookSDK/tables/record_stamp_table.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_text_table.hpp"

namespace ox {
namespace {

TEST(RecordHashTable, AgreesWithAStandardMapThroughInsertionsAndRemovals) {
  std::vector<RecordKey> keys;
  keys.reserve(2050);
  for (int i = 0; i < 2000; ++i) keys.push_back(RecordKey::make(RecordKind::Person));
  for (int i = 0; i < 50; ++i) keys.push_back(RecordKey::of("foreign " + std::to_string(i)));
  RecordHashTable<int> map;
  std::unordered_map<RecordKey, int> expected;
  std::mt19937 random(7);
  for (int step = 0; step < 40000; ++step) {
    const auto& key = keys[random() % keys.size()];
    if (random() % 3 == 0) {
      map.erase(key);
      expected.erase(key);
    } else {
      *map.insert(key, step) = step;
      expected[key] = step;
    }
  }
  EXPECT_EQ(map.size(), expected.size());
  for (const auto& key : keys) {
    const int* const found = map.find(key);
    const auto wanted = expected.find(key);
    ASSERT_EQ(found != nullptr, wanted != expected.end());
    if (found == nullptr) continue;
    EXPECT_EQ(*found, wanted->second);
  }
}

TEST(RecordHashTable, KeepsTheFirstValueAndHoldsNothingForNoRecord) {
  RecordHashTable<int> map;
  const auto key = RecordKey::of("a");
  EXPECT_EQ(map.find(key), nullptr);
  map.erase(key);
  EXPECT_EQ(*map.insert(key, 1), 1);
  EXPECT_EQ(*map.insert(key, 2), 1);
  EXPECT_EQ(map.insert(RecordKey(), 3), nullptr);
  EXPECT_EQ(map.find(RecordKey()), nullptr);
  map.erase(RecordKey());
  map.reserve(1000);
  EXPECT_EQ(*map.find(key), 1);
  EXPECT_EQ(map.size(), 1U);
}

TEST(RecordTables, TellMissingFromStored) {
  const auto key = RecordKey::of("a");
  RecordTextTable texts;
  EXPECT_EQ(texts.find(key), Text());
  texts.setUnlessRemoved(key, "", texts.removals());
  EXPECT_EQ(texts.find(key), Text(""));
  const auto before = texts.removals();
  texts.setUnlessRemoved(key, "x", before);
  EXPECT_EQ(texts.find(key), Text("x"));
  texts.remove(key);
  EXPECT_EQ(texts.count(), 0U);
  texts.setUnlessRemoved(key, "worked out before the removal", before);
  EXPECT_EQ(texts.count(), 0U);

  RecordStampTable stamps;
  EXPECT_EQ(stamps.find(key), std::nullopt);
  EXPECT_EQ(stamps.setIfAbsent(key, BookId::of("A")).text(), "A");
  EXPECT_EQ(stamps.setIfAbsent(key, BookId::of("B")).text(), "A");
  stamps.set(key, BookId::of("B"));
  EXPECT_EQ(stamps.find(key)->text(), "B");
  stamps.remove(key);
  EXPECT_EQ(stamps.find(key), std::nullopt);
  EXPECT_EQ(stamps.count(), 0U);
}

TEST(BookId, EqualTextsGiveEqualNumbersAndTheEmptyTextIsABook) {
  EXPECT_EQ(BookId::of("A"), BookId::of("A"));
  EXPECT_NE(BookId::of("A"), BookId::of("a"));
  EXPECT_EQ(BookId::of("").text(), "");
  EXPECT_FALSE(BookId::of("").isNone());
  EXPECT_TRUE(BookId().isNone());
}

}  // namespace
}  // namespace ox
