#include "ox/sync/http/retry_after.hpp"

#include <gtest/gtest.h>

namespace ox::sync {
namespace {

constexpr std::int64_t kNow = 1'700'000'000'000;  // Tue, 14 Nov 2023 22:13:20 GMT

// In seconds; -1: it says nothing.
std::int64_t paused(const std::string& retryAfter, const std::string& date = {}) {
  const auto pause = askedPause(&retryAfter, date.empty() ? nullptr : &date, kNow);
  return pause ? pause->count() : -1;
}

TEST(RetryAfter, CountsSeconds) {
  EXPECT_EQ(paused("120"), 120);
  EXPECT_EQ(paused("1"), 1);
}

// The other side's clock may be wrong by hours.
TEST(RetryAfter, IsADateByTheClockOfTheAnswer) {
  EXPECT_EQ(paused("Tue, 14 Nov 2023 10:00:30 GMT", "Tue, 14 Nov 2023 10:00:00 GMT"), 30);
  EXPECT_EQ(paused("Tue, 14 Nov 2023 22:14:00 GMT"), 40);
}

TEST(RetryAfter, LastsFromASecondToADay) {
  EXPECT_EQ(paused("0"), 1);
  EXPECT_EQ(paused("Tue, 14 Nov 2023 09:00:00 GMT", "Tue, 14 Nov 2023 10:00:00 GMT"), 1);
  EXPECT_EQ(paused("99999999"), 86400);
  EXPECT_EQ(paused("999999999999999999999999999"), 86400);
}

TEST(RetryAfter, IsMissingWhereItMakesNoSense) {
  EXPECT_EQ(askedPause(nullptr, nullptr, kNow), std::nullopt);
  EXPECT_EQ(paused("soon"), -1);
  EXPECT_EQ(paused("-5"), -1);
  EXPECT_EQ(paused(""), -1);
}

}  // namespace
}  // namespace ox::sync
