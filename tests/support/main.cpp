// The main of every test program that touches the contact store.
#include <gtest/gtest.h>

#include "tests/support/second_process.hpp"
#include "tests/support/store_environment.hpp"

int main(int argc, char** argv) {
  auto& environment = ox::support::StoreEnvironment::instance();
  if (ox::support::SecondProcess::isAskedFor(argc, argv)) {
    environment.join();
    return ox::support::SecondProcess::runAsked(argc, argv);
  }
  environment.setUp();
  testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  environment.tearDown();
  return result;
}
