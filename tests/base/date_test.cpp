#include "ox/base/date.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

struct Row {
  std::string text;
  std::string canonical;  // empty: refused
};

TEST(Date, ReadsEveryTruncationAndWritesItBackInExtendedForm) {
  const std::vector<Row> rows = {
      {"1990-05-17", "1990-05-17"},
      {"19900517", "1990-05-17"},
      {"--05-17", "--05-17"},
      {"--0517", "--05-17"},
      {"---17", "---17"},
      {"1990-05", "1990-05"},
      {"1990", "1990"},
      {"--05", "--05"},
      {"1996-02-29", "1996-02-29"},
      {"--02-29", "--02-29"},
      {"1990-05-17T10:15:30Z", "1990-05-17T10:15:30Z"},
      {"19900517T101530+0200", "1990-05-17T10:15:30+02:00"},
      {"1990-05-17T10:15:30.250-05:30", "1990-05-17T10:15:30-05:30"},
      {"1990-05-17 10:15", "1990-05-17T10:15:00"},
      {"1998-12-31T23:59:60Z", "1998-12-31T23:59:60Z"},
      {"", ""},
      {"1990-13-01", ""},
      {"1990-02-29", ""},
      {"1900-02-29", ""},
      {"2000-02-29", "2000-02-29"},
      {"1990-04-31", ""},
      {"17.05.1990", ""},
      {"1990-05-17x", ""},
      {"1990-05-17T25:00", ""},
      {"circa 1800", ""},
  };
  for (const auto& row : rows) {
    const auto date = Date::fromText(row.text);
    EXPECT_EQ(date ? date->toText() : std::string(), row.canonical) << row.text;
  }
}

TEST(Date, WritesOffsetsOfLessThanAnHourWithTheirSign) {
  Date date{.year = 2000, .month = 1, .day = 2, .secondOfDay = 0, .utcOffsetMinutes = -30};
  EXPECT_EQ(date.toText(), "2000-01-02T00:00:00-00:30");
  EXPECT_EQ(Date::fromText("2000-01-02T00:00:00-00:30"), date);
}

}  // namespace
}  // namespace ox
