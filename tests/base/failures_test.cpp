#include "ox/base/failures.hpp"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace ox::failures {
namespace {

TEST(Failures, AreCountedByKindWithTheLastReason) {
  EXPECT_EQ(snapshot(), Snapshot());
  countRefusal("unknown property");
  countFailure("disk full");
  countRefusal("wrong type");
  EXPECT_EQ(snapshot(), (Snapshot{2, 1, "wrong type"}));
}

TEST(Failures, LoseNoCountAcrossThreads) {
  std::vector<std::thread> threads(4);
  for (auto& thread : threads) {
    thread = std::thread([] {
      for (int i = 0; i < 1000; ++i) {
        countFailure("a");
        countRefusal("b");
        snapshot();
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(snapshot().failures, 4000U);
  EXPECT_EQ(snapshot().refusals, 4000U);
}

TEST(Failures, OfAThreadAreItsOwnWithoutThoseThatArePutAside) {
  countFailure("a");
  std::thread([] {
    countFailure("b");
    EXPECT_EQ(failureCountOfThread(), 1U);
  }).join();
  {
    const Aside aside;
    countFailure("c");
    countRefusal("d");
  }
  countFailure("e");
  EXPECT_EQ(failureCountOfThread(), 2U);
  EXPECT_EQ(snapshot(), (Snapshot{1, 4, "e"}));
}

}  // namespace
}  // namespace ox::failures
