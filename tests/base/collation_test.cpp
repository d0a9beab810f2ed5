#include "ox/base/text/collation.hpp"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <vector>

namespace ox {
namespace {

std::string sorted(const char* locale, std::vector<std::string> texts) {
  ::setenv("LC_ALL", locale, 1);
  const Collation order;
  std::stable_sort(texts.begin(), texts.end(),
                   [&](const auto& a, const auto& b) { return order.keyOf(a) < order.keyOf(b); });
  std::string all;
  for (const auto& text : texts) all += (all.empty() ? "" : " ") + text;
  return all;
}

TEST(Collation, OrdersAsReadersOfTheLanguageExpect) {
  EXPECT_EQ(sorted("C", {"z", "ä", "a", "B", "b", "A"}), "a A ä b B z");
  EXPECT_EQ(sorted("de_DE.UTF-8", {"Zoe", "Öl", "Ofen", "Olga"}), "Ofen Öl Olga Zoe");
  EXPECT_EQ(sorted("sv_SE.UTF-8", {"Öl", "Zoe", "Ål", "Äl"}), "Zoe Ål Äl Öl");
  EXPECT_EQ(sorted("tr_TR.UTF-8", {"İpek", "Jale", "Irmak", "Hale"}), "Hale Irmak İpek Jale");
  EXPECT_EQ(sorted("zh_CN.UTF-8", {"赵", "王", "李", "阿"}), "阿 李 王 赵");
}

TEST(Collation, GivesKeysOfLongTextsWhole) {
  ::setenv("LC_ALL", "C", 1);
  const Collation order;
  const std::string words(300, 'a');
  std::string accents;
  for (int i = 0; i < 300; ++i) accents += "\u1EA5\u0328";
  EXPECT_LT(order.keyOf(words), order.keyOf(words + "a"));
  EXPECT_LT(order.keyOf(accents), order.keyOf(accents + "a"));
  EXPECT_EQ(order.keyOf(""), order.keyOf(""));
  EXPECT_LT(order.keyOf(""), order.keyOf("a"));
}

TEST(Collation, LetsTheSecondTextDecideBeforeTheCaseOfTheFirst) {
  ::setenv("LC_ALL", "C", 1);
  const Collation order;
  EXPECT_LT(order.keyOf("Öhm", "Anna"), order.keyOf("öhm", "Bo"));
  EXPECT_LT(order.keyOf("öhm", "Anna"), order.keyOf("Öhm", "Bo"));
  EXPECT_LT(order.keyOf("Ohm", "Zoe"), order.keyOf("Ohma", "Ann"));
}

TEST(Collation, NamesTheLetterOfAnIndex) {
  ::setenv("LC_ALL", "zh_CN.UTF-8", 1);
  const Collation chinese;
  EXPECT_EQ(chinese.indexLetterOf("王小明"), "W");
  EXPECT_EQ(chinese.indexLetterOf("ann"), "A");
  ::setenv("LC_ALL", "sv_SE.UTF-8", 1);
  const Collation swedish;
  EXPECT_EQ(swedish.indexLetterOf("Öberg"), "Ö");
  EXPECT_EQ(swedish.indexLetterOf("Éric"), "E");
  ::setenv("LC_ALL", "C", 1);
  const Collation none;
  EXPECT_EQ(none.indexLetterOf("Öberg"), "O");
  EXPECT_EQ(none.indexLetterOf("7 Eleven"), "…");
}

}  // namespace
}  // namespace ox
