#include "ox/base/text/transcription.hpp"

#include <gtest/gtest.h>
#include <random>
#include <string>
#include <unicode/uchar.h>
#include <vector>

#include "ox/base/text/icu_transcription.hpp"
#include "ox/base/text/transcription_pieces.hpp"

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

std::string utf8(char32_t character) {
  std::string result;
  if (character < 0x80) {
    result += static_cast<char>(character);
  } else if (character < 0x800) {
    result += static_cast<char>(0xC0 | (character >> 6U));
    result += static_cast<char>(0x80 | (character & 0x3FU));
  } else {
    if (character < 0x10000) {
      result += static_cast<char>(0xE0 | (character >> 12U));
    } else {
      result += static_cast<char>(0xF0 | (character >> 18U));
      result += static_cast<char>(0x80 | ((character >> 12U) & 0x3FU));
    }
    result += static_cast<char>(0x80 | ((character >> 6U) & 0x3FU));
    result += static_cast<char>(0x80 | (character & 0x3FU));
  }
  return result;
}

char32_t oneOf(std::mt19937& random, char32_t first, char32_t end) {
  return first + static_cast<char32_t>(random() % (end - first));
}

// Adds the texts up and compares them a few at a time, each in a line of its own: ICU is quicker on
// one long text than on many short ones, and no rule looks past a line feed.
class Comparison {
 public:
  ~Comparison() { compare(); }
  void add(const std::string& text) {
    text_ += text;
    text_ += '\n';
    if (text_.size() > 200) compare();
  }

 private:
  void compare() {
    EXPECT_EQ(transcribeToLatin(text_), transcribeWithIcu(text_)) << text_;
    text_.clear();
  }
  std::string text_;
};

TEST(Transcription, EveryCharacterReadsAsIcuReadsIt) {
  Comparison comparison;
  for (char32_t character = 0; character < 0x250; ++character) {
    if (character != U'\n') comparison.add("x" + utf8(character) + "y" + utf8(character));
  }
  for (char32_t character = 0x3400; character < 0xA000; ++character) {
    comparison.add(utf8(character));
  }
}

TEST(Transcription, EveryPairOfLatinCharactersReadsAsIcuReadsIt) {
  Comparison comparison;
  std::mt19937 random(11);
  for (char32_t first = 0; first < 0x250; ++first) {
    std::string line;
    for (int i = 0; i < 60; ++i) line += utf8(first) + utf8(oneOf(random, 0, 0x250));
    comparison.add(line);
  }
}

TEST(Transcription, ContextualCharactersReadAsIcuReadsThemBesideEachOther) {
  const std::vector<std::string> pieces = {"藏", "文", "重", "庆", "沈",     "阳", "秘",     "鲁",
                                           " ",  "张", "a",  "1",  "\u0301", ".",  "\u3000", "-"};
  for (const auto& first : pieces) {
    for (const auto& second : pieces) {
      for (const auto& third : pieces) {
        const auto text = first + second + third;
        EXPECT_EQ(transcribeToLatin(text), transcribeWithIcu(text)) << text;
      }
    }
  }
}

// A character of any sort a name may hold, those that the table knows more often.
std::string anyCharacter(std::mt19937& random) {
  static const std::vector<std::string> kOthers = {
      "。",     "，",       "（",       "）",         "「",     "・",       "ー",
      "か",     "カ",       "ｶ",        "が",         "\u3099", "한",       "\u1100\u1161",
      "\u0301", "\u0308",   "\u0327",   "\uFE0F",     "😀",      "\uFFFD",   "Ω",
      "ς",      "Я",        "ß",        "İ",          "ı",      "ŉ",        "ǆ",
      "〇",     "々",       "〆",       "\U00020BB7", "\u2F00", "\uF900",   "㈱",
      "①",      "Ａ",       "\u3000",   "\u200D",     "«",      "»",        "“",
      "”",      "‘",        "…",        "ﬁ",          "\xFF",   "\xE5\xBC", "\xED\xA0\x80",
      "\xC3",   "\xC1\x81", "\xE3\x80", "อำ",         "कि",     "א",        "\u0345"};
  const auto draw = random() % 100;
  if (draw < 40) return utf8(oneOf(random, 0x4E00, 0xA000));
  if (draw < 45) return utf8(oneOf(random, 0x3400, 0x4E00));
  if (draw < 75) return utf8(oneOf(random, 0, 0x80));
  if (draw < 90) return utf8(oneOf(random, 0x80, 0x250));
  return kOthers[random() % kOthers.size()];
}

TEST(Transcription, RandomMixturesReadAsIcuReadsThem) {
  std::mt19937 random(20240229);
  for (int round = 0; round < 20000; ++round) {
    std::string text;
    const auto length = round % 500 == 0 ? 200 : 1 + random() % 9;
    for (std::size_t i = 0; i < length; ++i) text += anyCharacter(random);
    ASSERT_EQ(transcribeToLatin(text), transcribeWithIcu(text))
        << "round " << round << ": " << text;
  }
}

TEST(Transcription, LongMixturesReadInPiecesAsIcuReadsThemWhole) {
  std::mt19937 random(20261121);
  for (int round = 0; round < 12; ++round) {
    std::string text;
    while (text.size() < 4000) {
      const auto character = anyCharacter(random);
      const auto count = random() % 40 == 0 ? 60U : 1U;
      for (unsigned i = 0; i < count; ++i) text += character;
    }
    ASSERT_EQ(transcribeInPieces(text), transcribeWithIcu(text)) << "round " << round;
  }
}

TEST(Transcription, RunsOfEveryMarkReadInPiecesAsIcuReadsThemWhole) {
  for (char32_t mark = 0; mark < 0x110000; ++mark) {
    const auto category = U_GET_GC_MASK(static_cast<UChar32>(mark));
    if ((category & U_GC_M_MASK) == 0) continue;
    icu::UnicodeString text(u"e");
    for (int i = 0; i < 40; ++i) text.append(static_cast<UChar32>(mark));
    text.append(u"張");
    std::string whole;
    text.toUTF8String(whole);
    ASSERT_EQ(transcribeInPieces(whole), transcribeWithIcu(whole)) << std::hex << +mark;
  }
}

// ICU takes square time by the piece, so the pieces have to be short.
TEST(Transcription, IsGivenToIcuInShortPiecesHoweverTheTextIsMade) {
  const std::vector<std::string> made = {
      "\u0301", "e\u0301\u0323",      "重", "重庆",       "€",          "か", "か\u3099",
      "\u1100", "\u1112\u1161\u11AB", "ー", "\U00016FF0", "\U00016FE4", "Ω"};
  for (const auto& unit : made) {
    icu::UnicodeString text(u"A");
    const auto repeated = icu::UnicodeString::fromUTF8(unit);
    while (text.length() < 20000) text.append(repeated);
    for (const auto& piece : transcriptionPieces(text)) {
      EXPECT_LE(piece.text.length(), kPieceUnits + 8) << unit;
    }
  }
}

}  // namespace
}  // namespace ox
