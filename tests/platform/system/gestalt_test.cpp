#include "ox/platform/system/Gestalt.hpp"

#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

// "major.minor" as the two requests answer, "-" for one that fails.
std::string answered() {
  std::string result;
  for (const auto selector : {gestaltSystemVersionMajor, gestaltSystemVersionMinor}) {
    std::int32_t number = -77;
    const bool done = Gestalt(selector, &number) == 0;
    EXPECT_EQ(number == -77, !done);
    result += done ? std::to_string(number) : "-";
    if (selector == gestaltSystemVersionMajor) result += '.';
  }
  return result;
}

TEST(Gestalt, AnswersTheVersionOfTheEnvironmentElseTheBuiltInOne) {
  unsetenv("OX_SYSTEM_VERSION");
  EXPECT_EQ(answered(), "10.15");
  struct Row {
    const char* value;
    const char* answer;
  };
  const std::vector<Row> rows = {
      {"", "10.15"},
      {"10.9", "10.9"},
      {"11.0", "11.0"},
      {"9.2147483647", "9.2147483647"},
      {"10", "-.-"},
      {"10.", "-.-"},
      {".9", "-.-"},
      {"10.9.1", "-.-"},
      {"ten.nine", "-.-"},
      {"10.9 ", "-.-"},
      {" 10.9", "-.-"},
      {"-1.9", "-.-"},
      {"10.-9", "-.-"},
      {"+10.9", "-.-"},
      {"10.2147483648", "-.-"},
  };
  for (const auto& row : rows) {
    setenv("OX_SYSTEM_VERSION", row.value, 1);
    EXPECT_EQ(answered(), row.answer) << row.value;
  }
}

TEST(Gestalt, FailsForAnyOtherRequest) {
  static_assert(gestaltSystemVersionMajor == 0x73797331);
  static_assert(gestaltSystemVersionMinor == 0x73797332);
  std::int32_t number = 5;
  EXPECT_NE(Gestalt(fourCharacterCode("sys3"), &number), 0);
  EXPECT_NE(Gestalt(0, &number), 0);
  EXPECT_EQ(number, 5);
  EXPECT_NE(Gestalt(gestaltSystemVersionMajor, nullptr), 0);
}

}  // namespace
}  // namespace ox
