#include "ox/records/tag_change.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

const TagChange kChange{"_local", "0190:ABPerson", {"Freunde", ""}, {std::string(200, 'x'), "ü"}};

TEST(TagChange, ComesBackAsItWasStored) {
  for (const auto& change : {kChange, TagChange{}, TagChange{"", "p", {}, {"a"}}}) {
    const auto stored = encodeTagChange(change);
    EXPECT_EQ(decodeTagChange(stored.before, stored.after), change);
  }
}

TEST(TagChange, IsRefusedWithAnyByteCutOffOrAnyBitFlipped) {
  const auto stored = encodeTagChange(kChange);
  const auto isRefused = [](std::string_view before, std::string_view after) {
    try {
      decodeTagChange(before, after);
      return false;
    } catch (const DamagedTagChange&) {
      return true;
    }
  };
  const auto refusesAll = [&](const std::string& bytes, auto decode) {
    for (std::size_t size = 0; size < bytes.size(); ++size) {
      EXPECT_TRUE(decode(bytes.substr(0, size))) << size;
    }
    for (std::size_t bit = 0; bit < bytes.size() * 8; ++bit) {
      auto flipped = bytes;
      flipped[bit / 8] = static_cast<char>(flipped[bit / 8] ^ (1 << (bit % 8)));
      EXPECT_TRUE(decode(flipped)) << bit;
    }
  };
  refusesAll(stored.before, [&](const std::string& part) { return isRefused(part, stored.after); });
  refusesAll(stored.after, [&](const std::string& part) { return isRefused(stored.before, part); });
  EXPECT_TRUE(isRefused(stored.after, stored.before));
}

}  // namespace
}  // namespace ox
