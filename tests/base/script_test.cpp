#include "ox/base/text/script.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

TEST(Script, TellsNamesWrittenWhollyInHanKanaOrHangul) {
  struct Row {
    std::string text;
    bool wholly;
  };
  const std::vector<Row> rows = {
      {"张", true},
      {"欧阳", true},
      {"\U00020BB7野家", true},
      {"佐々木", true},
      {"〇", true},
      {"さくら", true},
      {"サクラ", true},
      {"ｻｸﾗ", true},
      {"シーラ", true},
      {"김철수", true},
      {"\u1100\u1161", true},
      {"阿不都·热合曼", true},
      {"ジョン・スミス", true},
      {"か\u3099", true},
      {"葛\U000E0100城", true},
      {"", false},
      {"·", false},
      {"ー", false},
      {"张 三", false},
      {"张3", false},
      {"张A", false},
      {"张。", false},
      {"Ann", false},
      {"Анна", false},
      {"ㄓㄤ", false},
      {"😀", false},
      {"\xE5\xBC", false},
      {std::string("张\0", 4), false},
  };
  for (const auto& row : rows) EXPECT_EQ(isHanKanaHangul(row.text), row.wholly) << row.text;
}

TEST(Script, HasTheCodeOfItsLetters) {
  const std::pair<std::string, std::string> rows[] = {
      {"Lee-Smith 3", "Latn"}, {"Łęcki", "Latn"},    {"Анна", "Cyrl"}, {"やまだ", "Hira"},
      {"ヤマダー", "Kana"},    {"やまダた", "Hrkt"}, {"김", "Hang"},   {"山田", "Hani"},
      {"山だ", "Zyyy"},        {"Ann Анна", "Zyyy"}, {"", "Zyyy"},     {"3 -", "Zyyy"},
      {"\xE5", "Zyyy"},
  };
  for (const auto& [text, code] : rows) EXPECT_EQ(scriptCode(text), code) << text;
}

}  // namespace
}  // namespace ox
