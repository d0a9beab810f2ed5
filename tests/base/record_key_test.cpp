#include "ox/base/record_key.hpp"

#include <gtest/gtest.h>
#include <set>
#include <thread>
#include <unordered_set>
#include <vector>

#include "ox/base/uuid.hpp"

namespace ox {
namespace {

constexpr const char* kUuid = "0190A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5B";

TEST(RecordKey, GivesBackEveryTextItWasMadeOf) {
  const std::string uuid = kUuid;
  const std::vector<std::string> texts = {
      uuid + ":ABPerson",
      uuid + ":ABGroup",
      uuid + ":ABAccount",
      uuid,
      uuid + ":ABPersonX",
      uuid + ":abperson",
      "0190a1b2-c3d4-7e5f-8a9b-0c1d2e3f4a5b:ABPerson",
      "0190A1B2-C3D4-4E5F-8A9B-0C1D2E3F4A5B:ABPerson",
      "FF90A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5B:ABPerson",
      "00000000-0000-7000-0000-000000000000:ABPerson",
      "00000000-0000-7000-0000-000000000000:ABGroup",
      "0190A1B2-C3D4-8E5F-8A9B-0C1D2E3F4A5B:ABGroup",
      "",
      ":ABPerson",
      std::string("a\0b", 3),
      "Ann",
  };
  std::set<RecordKey> keys;
  for (const auto& text : texts) {
    const auto key = RecordKey::of(text);
    EXPECT_EQ(key.text(), text);
    EXPECT_EQ(RecordKey::of(text), key) << text;
    EXPECT_FALSE(key.isNone()) << text;
    keys.insert(key);
  }
  EXPECT_EQ(keys.size(), texts.size());
}

TEST(RecordKey, PacksOurOwnIdentifiersAndInternsOnlyTheOthers) {
  EXPECT_FALSE(RecordKey::of(std::string(kUuid) + ":ABPerson").isForeign());
  EXPECT_FALSE(RecordKey::of(std::string(kUuid) + ":ABGroup").isForeign());
  EXPECT_TRUE(RecordKey::of("Ann").isForeign());
  EXPECT_EQ(RecordKey::known("nobody stored this"), std::nullopt);
  EXPECT_EQ(RecordKey::known("nobody stored this"), std::nullopt);
  EXPECT_EQ(RecordKey::known("Ann"), RecordKey::of("Ann"));
  const auto person = RecordKey::of(std::string(kUuid) + ":ABPerson");
  EXPECT_EQ(RecordKey::known(std::string(kUuid) + ":ABPerson"), person);
  EXPECT_EQ(RecordKey::fromBytes(person.bytes()), person);
}

TEST(RecordKey, MakesNewIdentifiersOfItsKind) {
  const auto person = RecordKey::make(RecordKind::Person);
  const auto group = RecordKey::make(RecordKind::Group);
  EXPECT_EQ(person.text().substr(36), ":ABPerson");
  EXPECT_EQ(group.text().substr(36), ":ABGroup");
  EXPECT_TRUE(uuidFromText(group.text().substr(0, 36)).has_value());
  EXPECT_EQ(RecordKey::of(person.text()), person);
  EXPECT_EQ(RecordKey::of(group.text()), group);
  EXPECT_TRUE(RecordKey().isNone());
  EXPECT_EQ(RecordKey().text(), "");
  EXPECT_FALSE(person.isNone());
}

TEST(RecordKey, HashesNewIdentifiersApart) {
  std::unordered_set<std::size_t> hashes;
  for (int i = 0; i < 10'000; ++i) hashes.insert(RecordKey::make(RecordKind::Person).hash());
  EXPECT_EQ(hashes.size(), 10'000U);
}

TEST(RecordKey, InternsTheSameTextOnceAcrossThreads) {
  constexpr int kThreads = 4;
  constexpr int kTexts = 500;
  std::vector<std::vector<RecordKey>> keys(kThreads);
  std::vector<std::thread> threads;
  threads.reserve(keys.size());
  for (auto& mine : keys) {
    threads.emplace_back([&mine] {
      for (int i = 0; i < kTexts; ++i) mine.push_back(RecordKey::of("text " + std::to_string(i)));
    });
  }
  for (auto& thread : threads) thread.join();
  for (const auto& mine : keys) EXPECT_EQ(mine, keys.front());
  EXPECT_EQ(keys.front().at(7).text(), "text 7");
}

TEST(RecordKey, IsWithinTheRangeOfWhatItBeginsWith) {
  for (const auto kind : {RecordKind::Person, RecordKind::Group}) {
    const auto key = RecordKey::make(kind);
    const auto text = key.text();
    for (std::size_t length = 1; length <= 36; ++length) {
      const auto range = RecordKey::rangeOf(text.substr(0, length), kind);
      ASSERT_TRUE(range) << length;
      EXPECT_LE(range->first.bytes(), key.bytes());
      EXPECT_LE(key.bytes(), range->second.bytes());
      EXPECT_TRUE(range->first.text().starts_with(text.substr(0, length)));
      EXPECT_TRUE(range->second.text().starts_with(text.substr(0, length)));
    }
    EXPECT_EQ(key.shortText(), text.substr(0, 18));
  }
  for (const auto* text : {"", "xyz", "FF", "01A2049A3999", "01A2049A-3999-4",
                           "01A2049A-3999-7000-9EEB-F52DA61E89CB:"}) {
    EXPECT_FALSE(RecordKey::rangeOf(text, RecordKind::Person)) << text;
  }
  EXPECT_EQ(RecordKey::of("foreign").shortText(), "foreign");
}

}  // namespace
}  // namespace ox
