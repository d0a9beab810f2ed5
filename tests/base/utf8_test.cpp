#include "ox/base/text/utf8.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

const std::string kBad = "\xEF\xBF\xBD";

TEST(Utf8, ReplacesEachMaximalIllFormedPartOnce) {
  struct Row {
    std::string text;
    std::string valid;
  };
  const std::vector<Row> rows = {
      {"", ""},
      {"plain text, longer than a word", "plain text, longer than a word"},
      {std::string("a\0b", 3), std::string("a\0b", 3)},
      {"Zo\xC3\xAB \xE5\xBC\xA0 \xF0\x9F\x98\x80", "Zo\xC3\xAB \xE5\xBC\xA0 \xF0\x9F\x98\x80"},
      {"\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF",
       "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF4\x8F\xBF\xBF"},
      {"a\x80z", "a" + kBad + "z"},
      {"\xC3", kBad},
      {"\xC3z", kBad + "z"},
      {"\xC0\xAF", kBad + kBad},
      {"\xE0\x80\xAF", kBad + kBad + kBad},
      {"\xED\xA0\x80", kBad + kBad + kBad},
      {"\xE5\xBC", kBad},
      {"\xE5\xBC\xE5\xBC\xA0", kBad + "\xE5\xBC\xA0"},
      {"\xF0\x9F\x98!", kBad + "!"},
      {"\xF4\x90\x80\x80", kBad + kBad + kBad + kBad},
      {"\xF5\x80", kBad + kBad},
      {"12345678\xFF"
       "12345678",
       "12345678" + kBad + "12345678"},
      {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64",
       "a" + kBad + kBad + kBad + "b" + kBad + "c" + kBad + kBad + "d"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(validUtf8(row.text), row.valid) << row.text;
    EXPECT_EQ(isValidUtf8(row.text), row.text == row.valid) << row.text;
    EXPECT_TRUE(isValidUtf8(row.valid)) << row.text;
  }
}

TEST(Utf8, AcceptsExactlyTheCharactersThatExist) {
  int accepted = 0;
  for (unsigned lead = 0xE0; lead <= 0xEF; ++lead) {
    for (unsigned second = 0; second <= 0xFF; ++second) {
      const std::string text = {static_cast<char>(lead), static_cast<char>(second), '\x80'};
      if (isValidUtf8(text)) ++accepted;
    }
  }
  // 16 leads with 64 second bytes each, without 32 overlong ones and 32 of surrogates.
  EXPECT_EQ(accepted, 16 * 64 - 64);
}

}  // namespace
}  // namespace ox
