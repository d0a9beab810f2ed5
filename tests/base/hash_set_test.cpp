#include "ox/base/hash_set.hpp"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace ox {
namespace {

TEST(HashSet, KnowsEveryHashThatWasInsertedAndNoOther) {
  std::mt19937_64 random(5);
  std::vector<std::uint64_t> inserted(200'000);
  for (auto& hash : inserted) hash = random();
  HashSet set;
  EXPECT_FALSE(set.contains(inserted.front()));
  for (const auto hash : inserted) set.insert(hash);
  for (const auto hash : inserted) ASSERT_TRUE(set.contains(hash));
  for (int i = 0; i < 200'000; ++i) ASSERT_FALSE(set.contains(random()));
}

TEST(HashSet, HoldsTheLowestAndTheHighest) {
  HashSet set;
  for (const auto hash : {std::uint64_t{0}, ~std::uint64_t{0}, ~std::uint64_t{1} << 32U}) {
    EXPECT_FALSE(set.contains(hash));
    set.insert(hash);
    EXPECT_TRUE(set.contains(hash));
  }
}

}  // namespace
}  // namespace ox
