#include "ox/base/charsets/charset_scores.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

std::string judgedFrom(const std::string& bytes, const std::vector<std::string>& languages = {}) {
  const auto judgement = judgedAlone(bytes, languages);
  return std::string(judgement.charset) + ", " + std::string(wordFor(judgement.certainty));
}

struct JudgedRow {
  std::string charset;
  std::string bytes;
};

TEST(CharsetScores, TellFromAFewNames) {
  const std::vector<JudgedRow> rows = {
      {"windows-1252", ""},
      {"windows-1252", "plain text"},
      {"windows-1252", "\xE9"},
      {"windows-1252", "M\xFCller;J\xFCrgen"},
      {"windows-1252", "N\xFC\xDFle"},
      {"windows-1252", "Fran\xE7ois Lef\xE8vre"},
      {"windows-1250", "\xA3ukasz;W\xF3jcik"},
      {"windows-1251", "\xCC\xEE\xF1\xEA\xE2\xE0"},
      {"windows-1253", "\xC1\xE8\xDE\xED\xE1"},
      {"GB18030", "\xCD\xF5;\xCE\xB0"},
      {"GB18030", "\xC0\xEE\xD0\xA1\xC1\xFA \xB1\xB1\xBE\xA9\xCA\xD0"},
      {"Shift_JIS", "\x8E\x52\x93\x63;\x91\xBE\x98\x59"},
      {"Shift_JIS", "\x83\x8D\x83\x43\x83\x68"},
      {"Shift_JIS", "\xB1\xDD\xC4\xDE\xB3;\xDB\xB2\xC4\xDE"},
      {"Big5", "\xB3\xAF;\xA4\x6A\xA4\xE5"},
      {"windows-949", "\xB1\xE8;\xB9\xCE\xBC\xF6"},
  };
  for (const auto& row : rows) {
    EXPECT_TRUE(judgedFrom(row.bytes).starts_with(row.charset + ", ")) << judgedFrom(row.bytes);
  }
}

// \xFE is "ş" in Turkish and "þ" in Icelandic.
TEST(CharsetScores, AddWhatIsKnownOfTheLanguage) {
  const std::string name = "A\xFE\xE7\xFD";
  EXPECT_EQ(judgedFrom(name, {"tr_TR"}), "windows-1254, nearly certain");
  const std::string yu = "\xC0";
  EXPECT_EQ(judgedFrom(yu, {"uk"}).substr(0, 12), "windows-1251");
  EXPECT_EQ(judgedFrom(yu, {"de_DE"}).substr(0, 12), "windows-1252");
  EXPECT_EQ(judgedFrom(yu, {"C"}), judgedFrom(yu, {}));
}

TEST(CharsetScores, OfOtherTextsOfTheBatchDecideWhereOneTellsLittle) {
  const auto known = weightsOfLanguages({});
  CharsetSample russian;
  russian.add("\xCF\xE0\xE2\xEB\xEE\xE2 \xC8\xE2\xE0\xED\xEE\xE2\xE0");
  const std::vector<CharsetWeights> others = {weightsOf(russian), weightsOf(russian)};
  CharsetSample single;
  single.add("\xDF");
  const auto told = [&](CharsetWeights weights) {
    const auto words = weightsOf(single);
    for (std::size_t i = 0; i < weights.size(); ++i) weights[i] += words[i];
    return judged(single, weights).charset;
  };
  EXPECT_EQ(told(known), "windows-1252");
  EXPECT_EQ(told(amongOthers(known, others)), "windows-1251");
  EXPECT_EQ(told(amongOthers(known, {})), "windows-1252");
  // A charset that another one names tells as much.
  CharsetWeights named{};
  addNamed("cp1251", named);
  EXPECT_EQ(told(amongOthers(known, {{named}})), "windows-1251");
}

TEST(CharsetSample, TakesEachWordBeyondAsciiOnce) {
  CharsetSample sample;
  EXPECT_TRUE(sample.isEmpty());
  sample.add("plain J\xFCrg; x=M\xFCller, J\xFCrg\n\xFCrg");
  EXPECT_EQ(sample.words(), "J\xFCrg\nM\xFCller\n\xFCrg\n");
  std::string many;
  for (int i = 0; i < 10000; ++i) many += "\xFC" + std::to_string(i) + " ";
  EXPECT_FALSE(sample.add(many));
  EXPECT_LT(sample.words().size(), 20000U);
}

}  // namespace
}  // namespace ox
