#include "ox/base/serial_queue.hpp"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace ox {
namespace {

TEST(SerialQueue, RunsTheTaskBeforeItReturns) {
  SerialQueue queue;
  int ran = 0;
  queue.sync([&] { ++ran; });
  queue.sync([&] { ++ran; });
  EXPECT_EQ(ran, 2);
}

TEST(SerialQueue, RefusesATaskThatSubmitsToItAndStaysUsable) {
  SerialQueue queue;
  bool inner = false;
  EXPECT_THROW(queue.sync([&] { queue.sync([&] { inner = true; }); }), std::logic_error);
  EXPECT_FALSE(inner);
  bool later = false;
  queue.sync([&] { later = true; });
  EXPECT_TRUE(later);
}

TEST(SerialQueue, PassesOnWhatATaskThrowsAndStaysUsable) {
  SerialQueue queue;
  std::string message;
  try {
    queue.sync([] { throw std::runtime_error("no store"); });
  } catch (const std::runtime_error& error) {
    message = error.what();
  }
  EXPECT_EQ(message, "no store");
  bool later = false;
  queue.sync([&] { later = true; });
  EXPECT_TRUE(later);
}

TEST(SerialQueue, LetsATaskUseAnotherQueue) {
  SerialQueue outer;
  SerialQueue inner;
  bool ran = false;
  outer.sync([&] { inner.sync([&] { ran = true; }); });
  EXPECT_TRUE(ran);
}

TEST(SerialQueue, RunsTheTasksOfManyThreadsOneAtATime) {
  SerialQueue queue;
  int running = 0;  // guarded by nothing but the queue
  int most = 0;
  int total = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&] {
      for (int i = 0; i < 500; ++i) {
        queue.sync([&] {
          most = std::max(most, ++running);
          ++total;
          --running;
        });
      }
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(most, 1);
  EXPECT_EQ(total, 2000);
}

}  // namespace
}  // namespace ox
