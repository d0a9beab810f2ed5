// A look-up of a record's object held it for a moment with the identity map locked. When everybody
// else let go of it in that moment, its destructor waited for that same lock: the process stood
// still for ever.
#include <gtest/gtest.h>
#include <thread>

#include "ox/platform/AddressBook/live_records.hpp"

namespace ox {
namespace {

constexpr int kRounds = 200'000;

TEST(RecordObject, IsAskedForWhileItsLastOwnerLetsGo) {
  const auto key = RecordKey::of("g:ABGroup");
  const auto askAndLetGo = [&] {
    for (int i = 0; i < kRounds; ++i) live_records::group(key);
  };
  std::thread other(askAndLetGo);
  askAndLetGo();
  other.join();
  const auto held = live_records::group(key);
  EXPECT_EQ(live_records::group(key), held);
}

TEST(RecordObject, OfTheOtherKindIsAskedForWhileItsLastOwnerLetsGo) {
  const auto key = RecordKey::of("back as a person");
  std::thread other([&] {
    for (int i = 0; i < kRounds; ++i) live_records::group(key);
  });
  for (int i = 0; i < kRounds; ++i) live_records::person(key);
  other.join();
  const auto held = live_records::person(key);
  EXPECT_EQ(live_records::person(key), held);
}

}  // namespace
}  // namespace ox
