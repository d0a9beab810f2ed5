#include "ox/base/record_slots.hpp"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unordered_set>

namespace ox {
namespace {

// A slot holds a place in a list of keys.
struct Places {
  static constexpr std::size_t kFullPercent = 75;
  const std::vector<RecordKey>& keys;

  const RecordKey& keyOf(std::uint32_t place) const { return keys[place]; }
};

TEST(RecordSlots, AgreeWithAStandardSetWhereKeysStandElsewhere) {
  std::vector<RecordKey> keys;
  keys.reserve(1500);
  for (int i = 0; i < 1500; ++i) keys.push_back(RecordKey::of("p" + std::to_string(i)));
  const Places places{keys};
  RecordSlots<std::uint32_t, Places> slots;
  std::unordered_set<std::uint32_t> expected;
  std::mt19937 random(11);
  for (int step = 0; step < 30000; ++step) {
    const auto place = static_cast<std::uint32_t>(random() % keys.size());
    if (random() % 5 < 2) {
      if (const auto* slot = slots.find(keys[place], places)) slots.erase(slot, places);
      expected.erase(place);
    } else {
      const auto [slot, isNew] = slots.claim(keys[place], places);
      ASSERT_EQ(isNew, expected.insert(place).second);
      *slot = place;
    }
    ASSERT_EQ(slots.size(), expected.size());
  }
  for (std::uint32_t place = 0; place < keys.size(); ++place) {
    const auto* slot = slots.find(keys[place], places);
    ASSERT_EQ(slot != nullptr, expected.contains(place)) << place;
    if (slot != nullptr) {
      EXPECT_EQ(*slot, place);
    }
  }
}

TEST(RecordSlots, KeepTheRoomThatWasMade) {
  std::vector<RecordKey> keys;
  keys.reserve(100);
  for (int i = 0; i < 100; ++i) keys.push_back(RecordKey::make(RecordKind::Person));
  const Places places{keys};
  RecordSlots<std::uint32_t, Places> slots;
  slots.reserve(keys.size(), places);
  auto* first = slots.claim(keys[0], places).first;
  *first = 0;
  for (std::uint32_t i = 1; i < 100; ++i) *slots.claim(keys[i], places).first = i;
  EXPECT_EQ(slots.find(keys[0], places), first) << "no claim has moved it";
}

}  // namespace
}  // namespace ox
