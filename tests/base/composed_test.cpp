#include "ox/base/text/composed.hpp"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>
#include <vector>

namespace ox {
namespace {

TEST(Composed, GivesTheSameTextHoweverItsAccentsAreTyped) {
  struct Row {
    std::string text;
    std::string composed;
  };
  const std::vector<Row> rows = {
      {"", ""},
      {"Ann", "Ann"},
      {"Zoe\u0308", "Zoë"},
      {"Zoë", "Zoë"},
      {"e\u0301\u0323", "ẹ\u0301"},
      {"\u1112\u1161\u11AB", "한"},
      {"か\u3099", "が"},
      {"\u212B", "Å"},
      {"a\xFF", "a\xFF"},
  };
  for (const auto& row : rows) EXPECT_EQ(composed(row.text), row.composed) << row.text;
}

TEST(Composed, GivesWhatIcuGivesOfAnyMixtureOfMarks) {
  const std::vector<std::u16string> pieces = {u"e",      u"a",      u"\u0301", u"\u0323", u"\u0308",
                                              u"\u0345", u"\u3099", u"か",     u"한",     u"\u1100",
                                              u"\u1161", u"\u11A8", u"\u0F71", u"\u0F73", u"Å",
                                              u"\u0344", u"ệ",      u"\u05B0", u"\u064B", u" "};
  UErrorCode status = U_ZERO_ERROR;
  const auto* nfc = icu::Normalizer2::getNFCInstance(status);
  ASSERT_TRUE(U_SUCCESS(status));
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    icu::UnicodeString text;
    for (auto i = random() % 12; i > 0; --i) {
      const auto& piece = pieces[random() % pieces.size()];
      text.append(piece.data(), static_cast<int32_t>(piece.size()));
    }
    std::string given;
    std::string expected;
    text.toUTF8String(given);
    nfc->normalize(text, status).toUTF8String(expected);
    ASSERT_EQ(composed(given), expected) << given;
  }
}

TEST(Composed, OrdersMarksHoweverManyStandTogether) {
  std::string mixed = "e";
  std::string sorted = "ẹ";
  for (int i = 0; i < 100000; ++i) mixed += "\u0301\u0323";
  for (int i = 1; i < 100000; ++i) sorted += "\u0323";
  for (int i = 0; i < 100000; ++i) sorted += "\u0301";
  EXPECT_EQ(composed(mixed), sorted);
}

}  // namespace
}  // namespace ox
