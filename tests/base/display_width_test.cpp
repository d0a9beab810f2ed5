#include "ox/base/text/display_width.hpp"

#include <array>
#include <gtest/gtest.h>

namespace ox {
namespace {

TEST(DisplayWidth, CountsTheColumnsOfATerminal) {
  struct Row {
    const char* text;
    std::size_t width;
  };
  constexpr std::array kRows = {
      Row{"", 0},
      Row{"Ann", 3},
      Row{"Zoë", 3},
      Row{"Zoe\u0308", 3},
      Row{"王小明", 6},
      Row{"ｱﾝ", 2},
      Row{"アン", 4},
      Row{"한글", 4},
      Row{"\u1112\u1161\u11AB", 2},
      Row{"שלום", 4},
      Row{"\U0001F600", 2},
      Row{"\u2764", 1},
      Row{"\u2764\uFE0F", 2},
      Row{"\U0001F44D\U0001F3FD", 2},
      Row{"\U0001F468\u200D\U0001F469\u200D\U0001F467", 2},
      Row{"\U0001F1EB\U0001F1F7\U0001F1E9\U0001F1EA", 4},
      Row{"a\u200Bb", 2},
  };
  for (const auto& row : kRows) EXPECT_EQ(displayWidth(row.text), row.width) << row.text;
}

TEST(DisplayWidth, CutsAtTheColumnWithoutTearingASequence) {
  EXPECT_EQ(frontOfWidth("Anna", 2), 2U);
  EXPECT_EQ(frontOfWidth("王小明", 3), 3U);
  EXPECT_EQ(frontOfWidth("Zoe\u0308!", 3), 5U);
  EXPECT_EQ(frontOfWidth("short", 10), 5U);
}

}  // namespace
}  // namespace ox
