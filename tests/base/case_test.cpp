#include "ox/base/text/case.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

TEST(Case, ComparesByFullFoldingAndNothingElse) {
  struct Row {
    std::string a;
    std::string b;
    bool equal;
  };
  const std::vector<Row> rows = {
      {"", "", true},
      {"", "a", false},
      {"Friends", "fRIENDS", true},
      {"Friends", "Friend", false},
      {"a", "b", false},
      {"[", "{", false},
      {"Straße", "STRASSE", true},
      {"Straße", "Strase", false},
      {"ÉCOLE", "école", true},
      {"école", "ecole", false},
      {"e\u0301", "é", false},
      {"ΣΟΦΟΣ", "σοφος", true},
      {"\u212Aelvin", "kelvin", true},
      {"I", "ı", false},
      {"张三", "张三", true},
      {"张三", "张四", false},
      {"张三A", "张三a", true},
      {std::string("a\0B", 3), std::string("A\0b", 3), true},
      {std::string("a\0B", 3), std::string("A\0c", 3), false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(equalsIgnoringCase(row.a, row.b), row.equal) << row.a << " / " << row.b;
    EXPECT_EQ(equalsIgnoringCase(row.b, row.a), row.equal) << row.b << " / " << row.a;
  }
}

TEST(Case, FoldsMarksAwayHoweverManyStandTogether) {
  std::string marked = "e";
  for (int i = 0; i < 100000; ++i) marked += "\u0301\u0323";
  EXPECT_EQ(foldedForSearch(marked + "a"), "ea");
}

TEST(Case, FoldsCaseAndAccentsAwayForSearching) {
  struct Row {
    std::string text;
    std::string folded;
  };
  const std::vector<Row> rows = {
      {"", ""},
      {"Ann LEE 3", "ann lee 3"},
      {"Zoë", "zoe"},
      {"Zoe\u0308", "zoe"},
      {"STRAßE", "strasse"},
      {"İzmir", "izmir"},
      {"Łódź", "lodz"},
      {"Æsir Ørsted Đorđe Ægir þór", "aesir orsted dorde aegir thor"},
      {"ışık", "isik"},
      {"ＡＢＣ１２", "abc12"},
      {"张三", "张三"},
      {"한글", "한글"},
      {"が", "か"},
  };
  for (const auto& row : rows) EXPECT_EQ(foldedForSearch(row.text), row.folded) << row.text;
}

}  // namespace
}  // namespace ox
