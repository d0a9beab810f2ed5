#include "ox/base/text.hpp"

#include <gtest/gtest.h>

namespace ox {
namespace {

TEST(Text, TakesOutEveryOccurrence) {
  EXPECT_EQ(withoutAll("a:ABAccountb:ABAccount", ":ABAccount"), "ab");
  EXPECT_EQ(withoutAll("aaa", "aa"), "a");
  EXPECT_EQ(withoutAll("abab", "ab"), "");
  // What is left is not looked at again.
  EXPECT_EQ(withoutAll("a<<b>b>c", "<b>"), "a<b>c");
  EXPECT_EQ(withoutAll("abc", ""), "abc");
  EXPECT_EQ(withoutAll("", "x"), "");
}

TEST(Text, TakesOutLineFeedsAndNothingElse) {
  EXPECT_EQ(withoutLineBreaks("+1 23\n4\n"), Text("+1 234"));
  EXPECT_EQ(withoutLineBreaks("a\r\nb\tc"), Text("a\rb\tc"));
  EXPECT_EQ(withoutLineBreaks("\n"), Text(""));
  EXPECT_EQ(withoutLineBreaks(nullptr), std::nullopt);
}

TEST(TextView, TellsMissingFromEmptyWhateverItWasMadeOf) {
  const char* null = nullptr;
  EXPECT_FALSE(TextView(null));
  EXPECT_FALSE(TextView(Text()));
  EXPECT_FALSE(TextView(std::nullopt));
  EXPECT_TRUE(TextView(""));
  EXPECT_TRUE(TextView(Text("")));
  EXPECT_FALSE(TextView("") == TextView());
  EXPECT_EQ(TextView("").toText(), Text(""));
  EXPECT_EQ(TextView().toText(), std::nullopt);
  const std::string nul("a\0b", 3);
  EXPECT_EQ(TextView(nul)->size(), 3U);
}

}  // namespace
}  // namespace ox
