#include "ox/base/uuid.hpp"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace ox {
namespace {

std::uint64_t millisecondsOf(const Uuid& uuid) {
  std::uint64_t result = 0;
  for (std::size_t i = 0; i < 6; ++i) result = result << 8U | uuid[i];
  return result;
}

TEST(Uuid, CarriesTheTimeAndTheMarksOfVersionSeven) {
  const auto now = [] {
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::system_clock::now().time_since_epoch())
                                          .count());
  };
  const auto before = now();
  const auto uuid = makeUuid();
  EXPECT_GE(millisecondsOf(uuid), before);
  EXPECT_LE(millisecondsOf(uuid), now());
  EXPECT_EQ(uuid[6] >> 4U, 7);
  EXPECT_EQ(uuid[8] >> 6U, 2);
}

TEST(Uuid, IsWrittenInUpperCaseAndReadInNoOtherForm) {
  const Uuid uuid = {0x01, 0x90, 0xA1, 0xB2, 0xC3, 0xD4, 0x7E, 0x5F,
                     0x8A, 0x9B, 0x0C, 0x1D, 0x2E, 0x3F, 0x4A, 0x5B};
  EXPECT_EQ(uuidText(uuid), "0190A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5B");
  EXPECT_EQ(uuidFromText("0190A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5B"), uuid);
  for (const auto* text :
       {"", "0190a1b2-c3d4-7e5f-8a9b-0c1d2e3f4a5b", "0190A1B2C3D47E5F8A9B0C1D2E3F4A5B",
        "0190A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5", "0190A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5B0",
        "{190A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5}", "0190A1B2-C3D4-7E5F-8A9B-0C1D2E3F4A5G",
        "0190A1B2-C3D47-E5F-8A9B-0C1D2E3F4A5B"}) {
    EXPECT_EQ(uuidFromText(text), std::nullopt) << text;
  }
}

TEST(Uuid, RisesWithEachOneMade) {
  std::vector<Uuid> made(20'000);
  for (auto& uuid : made) uuid = makeUuid();
  EXPECT_EQ(std::adjacent_find(made.begin(), made.end(), std::greater_equal<>()), made.end());
}

TEST(Uuid, RisesInEachOfManyThreadsAndIsNeverMadeTwice) {
  constexpr std::size_t kEach = 5'000;
  std::vector<std::vector<Uuid>> made(4, std::vector<Uuid>(kEach));
  std::vector<std::thread> threads;
  for (auto& mine : made) {
    threads.emplace_back([&mine] {
      for (auto& uuid : mine) uuid = makeUuid();
    });
  }
  for (auto& thread : threads) thread.join();
  std::vector<Uuid> all;
  for (const auto& mine : made) {
    EXPECT_TRUE(std::is_sorted(mine.begin(), mine.end()));
    all.insert(all.end(), mine.begin(), mine.end());
  }
  std::sort(all.begin(), all.end());
  EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
}

}  // namespace
}  // namespace ox
