// The head of a new store file was read in several steps: a process that looked while another one
// made the tables saw no mark and yet tables, and refused the file as another program's.
#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/schema/schema.hpp"
#include "tests/support/store_environment.hpp"

namespace ox {
namespace {

TEST(StoreBeingMade, IsNobodyElses) {
  for (int round = 0; round < 60; ++round) {
    const auto path = support::temporaryPath("new" + std::to_string(round) + ".db").string();
    std::atomic<bool> start = false;
    std::vector<std::string> refused(6);
    std::vector<std::thread> openers;
    for (auto& reason : refused) {
      openers.emplace_back([&] {
        while (!start) std::this_thread::yield();
        try {
          openStoreFile(path);
        } catch (const StoreError& error) {
          reason = error.what();
        }
      });
    }
    start = true;
    for (auto& opener : openers) opener.join();
    EXPECT_EQ(refused, std::vector<std::string>(6));
  }
}

}  // namespace
}  // namespace ox
