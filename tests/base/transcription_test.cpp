#include "base/text/transcription.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "base/text/icu_transcription.hpp"

namespace ox {
namespace {

TEST(Transcription, GivesUpperCaseSyllablesWithTheBlanksThatIcuInserts) {
  struct Row {
    std::string text;
    std::string latin;
  };
  const std::vector<Row> rows = {
      {"", ""},
      {"张三", "ZHANG SAN"},
      {"張三豐", "ZHANG SAN FENG"},
      {"张 三", "ZHANG SAN"},
      {"吕", "LU"},
      {"Ann Lee 3", "ANN LEE 3"},
      {"Mr.Bean", "MR. BEAN"},
      {"a(b)c", "A (B) C"},
      {"3张3", "3ZHANG3"},
      {"A张a", "A ZHANG A"},
      {"Zoë", "ZOE"},
      {"Zoe\u0308", "ZOE"},
      {"Straße", "STRASSE"},
      {"İstanbul Işıl", "ISTANBUL ISIL"},
      {"重", "ZHONG"},
      {"重庆", "CHONG QING"},
      {"重 庆", "CHONG QING"},
      {"重  庆", "ZHONG  QING"},
      {"沈阳", "SHEN YANG"},
      {"西藏文", "XI ZANG WEN"},
      {"西藏", "XI CANG"},
      {"张三。李四", "ZHANG SAN。LI SI"},
      {"张\u3000三", "ZHANG\u3000SAN"},
      {"Ａ張", "Ａ ZHANG"},
      {"\u0301a", "A"},
      {"a\xFF"
       "b",
       "A\uFFFDB"},
      {std::string("a\0张", 5), std::string("A\0ZHANG", 7)},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(transcribeToLatin(row.text), row.latin) << row.text;
    EXPECT_EQ(transcribeWithIcu(row.text), row.latin) << row.text;
  }
}

}  // namespace
}  // namespace ox
