#include <gtest/gtest.h>

#include "card_text.hpp"

namespace ox::vcard {
namespace {

std::string card(const std::string& lines) {
  return "BEGIN:VCARD\nVERSION:2.1\n" + lines + "END:VCARD\n";
}

TEST(CardCharset, ParameterDecidesInEveryVersion) {
  EXPECT_EQ(textOfCard("2.1", "NOTE;CHARSET=ISO-8859-1:J\xFCrg\n"), "Note=Jürg\n");
  EXPECT_EQ(textOfCard("3.0", "NOTE;CHARSET=windows-1251:\xCC\xE8\xF0\n"), "Note=Мир\n");
  EXPECT_EQ(textOfCard("2.1", "NOTE;CHARSET=SHIFT_JIS:\x83\x5C\x8E\x52\n"), "Note=ソ山\n");
  EXPECT_EQ(textOfCard("2.1", "NOTE;CHARSET=GBK;ENCODING=QUOTED-PRINTABLE:=CD=F5\n"), "Note=王\n");
  EXPECT_EQ(textOfCard("2.1", "NOTE;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:=C3=BC\n"), "Note=ü\n");
  EXPECT_EQ(textOfCard("2.1", "NOTE;CHARSET=ISO-2022-JP:\x1B$B;3\x1B(B\n"), "Note=山\n");
  EXPECT_EQ(textOfCard("2.1", "NOTE;CHARSET=x-no-such:ü\n"), "Note=ü\n");
  EXPECT_EQ(
      textOfCard("2.1", "ROLE;HOME;CHARSET=ISO-8859-1;ENCODING=QUOTED-PRINTABLE:=FC=0D=0Ab\n"),
      "kept=ROLE;TYPE=HOME:ü\\nb\n");
}

TEST(CardCharset, RawBytesAreReadAsTheCardOrTheFileNames) {
  // \xE1 is "á" in windows-1252 and "α" in windows-1253.
  EXPECT_EQ(textOfAll(card("TITLE:\xE1\nROLE;CHARSET=windows-1253:\xE2\n")),
            "JobTitle=α\nkept=ROLE:β\nrepair 3: text is not UTF-8, read as windows-1253 (named in "
            "the card)\n");
  EXPECT_EQ(textOfAll(card("TITLE:\xE1\n") + card("NOTE;CHARSET=windows-1253:\xE2\n")),
            "JobTitle=α\nrepair 3: text is not UTF-8, read as windows-1253 (named in the "
            "file)\n--\nNote=β\n");
  EXPECT_EQ(textOfAll(card("N:M\xFCller;J\xFCrgen\n")),
            "First=Jürgen\nLast=Müller\nrepair 3: text is not UTF-8, read as windows-1252 (nearly "
            "certain)\n");
}

TEST(CardCharset, LettersOfTheWholeFileAreEvidence) {
  std::string file = card("TITLE:\xC3\xEB\xE0\xE2\xED\xFB\xE9\n");
  file += card(
      "NOTE:\xCF\xF0\xE8\xE2\xE5\xF2, \xFD\xF2\xEE \xEF\xF0\xEE\xF1\xF2\xEE\xE9 "
      "\xF2\xE5\xEA\xF1\xF2 \xED\xE0 \xF0\xF3\xF1\xF1\xEA\xEE\xEC \xFF\xE7\xFB\xEA\xE5\n");
  EXPECT_EQ(
      textOfAll(file),
      "JobTitle=Главный\nrepair 3: text is not UTF-8, read as windows-1251 (nearly certain)\n--\n"
      "Note=Привет, это простой текст на русском языке\n"
      "repair 7: text is not UTF-8, read as windows-1251 (nearly certain)\n");
}

// \xDF is "ß", "Я" or "ί": a single letter tells nothing by itself.
TEST(CardCharset, LanguagesThatCardsNameAreEvidence) {
  const auto titleOf = [](const std::string& lines) {
    const auto text = textOfAll(card("TITLE:\xDF\n" + lines));
    return text.substr(0, text.find('\n'));
  };
  EXPECT_EQ(titleOf(""), "JobTitle=ß");
  EXPECT_EQ(titleOf("X-A;LANGUAGE=ru:a\n"), "JobTitle=Я");
  EXPECT_EQ(titleOf("X-A;LANGUAGE=\"el-GR\":a\n"), "JobTitle=ί");
  EXPECT_EQ(titleOf("LANG:uk\n"), "JobTitle=Я");
  EXPECT_EQ(titleOf("PRODID:-//Maker//Program 1.0//RU\n"), "JobTitle=Я");
  EXPECT_EQ(titleOf("X-SOFTWARE:-//Maker//Program//el\n"), "JobTitle=ί");
  EXPECT_EQ(titleOf("PRODID:-//Maker//Program//EN\n"), "JobTitle=ß");
}

TEST(CardCharset, QuotedPrintableWithoutACharsetIsEvidence) {
  EXPECT_EQ(textOfAll(card("N;ENCODING=QUOTED-PRINTABLE:=CD=F5;=\n=CE=B0\n")),
            "First=伟\nLast=王\nrepair 4: text is not UTF-8, read as GB18030 (nearly certain)\n");
}

// Gives what it holds in order alone, as a pipe does.
class InOrderSource : public ByteSource {
 public:
  explicit InOrderSource(std::string_view bytes) : bytes_(bytes) {}

  std::size_t read(char* buffer, std::size_t size) override {
    const auto count = bytes_.copy(buffer, size);
    bytes_.remove_prefix(count);
    return count;
  }

 private:
  std::string_view bytes_;
};

TEST(CardCharset, OfASourceInOrderIsJudgedByTheCardsSoFar) {
  const auto text = card("TITLE:\xDF\n") +
                    card("N:\xC8\xE2\xE0\xED\xEE\xE2\xE0;\xCE\xEB\xFC\xE3\xE0\n") +
                    card("TITLE:\xDF\n");
  InOrderSource source(text);
  Reader reader(source);
  EXPECT_TRUE(textOf(*reader.next()).starts_with("JobTitle=ß\n"));
  EXPECT_TRUE(textOf(*reader.next()).starts_with("First=Ольга\nLast=Иванова\n"));
  EXPECT_TRUE(textOf(*reader.next()).starts_with("JobTitle=Я\n"));
}

TEST(CardCharset, CardThatCannotBeInTheCharsetOfItsFileIsJudgedByItself) {
  std::string file;
  for (const auto* name :
       {"\xC8\xE2\xE0\xED\xEE\xE2", "\xCF\xE5\xF2\xF0\xEE\xE2", "\xCE\xEB\xFC\xE3\xE0",
        "\xD1\xE5\xF0\xE3\xE5\xE9", "\xCC\xE0\xF0\xE8\xFF", "\xC0\xED\xED\xE0"}) {
    file += card(std::string("TITLE:") + name + "\n");
  }
  // 山田太郎 in Shift_JIS.
  file += card("TITLE:\x8E\x52\x93\x63\x91\xBE\x98\x59\n");
  const auto text = textOfAll(file);
  EXPECT_EQ(text.substr(0, text.find('\n')), "JobTitle=Иванов");
  EXPECT_NE(text.find("JobTitle=山田太郎\n"), text.npos) << text;
}

TEST(CardCharset, DamagedUtf8StaysUtf8) {
  EXPECT_EQ(textOfAll(card("NOTE:Jürgen Müller\xFF\n")),
            "Note=Jürgen Müller\xEF\xBF\xBD\nrepair 3: ill-formed UTF-8 replaced by U+FFFD\n");
}

std::string utf16(std::u16string_view text, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char low = static_cast<char>(unit & 0xFFU);
    const char high = static_cast<char>(unit >> 8U);
    bytes += bigEndian ? high : low;
    bytes += bigEndian ? low : high;
  }
  return bytes;
}

TEST(CardCharset, Utf16IsReadWithAndWithoutItsMark) {
  const std::u16string text =
      u"BEGIN:VCARD\r\nVERSION:3.0\r\nNOTE;CHARSET=ISO-8859-1:ä\u5C71\U0001F600\xD800!\r\nEND:"
      u"VCARD\r\n";
  const std::string expected = "Note=ä山😀\xEF\xBF\xBD!\n";
  for (const bool bigEndian : {false, true}) {
    const auto bytes = utf16(text, bigEndian);
    EXPECT_EQ(textOfAll(utf16(u"\uFEFF", bigEndian) + bytes), expected);
    EXPECT_EQ(textOfAll(utf16(u"BEGIN:VCARD\nVERSION:3.0\nNOTE:ä\nEND:VCARD", bigEndian)),
              "Note=ä\n");
    // An odd last byte is half a character, outside of the card.
    EXPECT_EQ(textOfAll(utf16(u"\uFEFF", bigEndian) + bytes + "x"), expected);
  }
}

TEST(CardCharset, Utf8MarkOutweighsParameters) {
  EXPECT_EQ(textOfAll("\xEF\xBB\xBF" + card("NOTE;CHARSET=ISO-8859-1:ü\n"
                                            "TITLE;CHARSET=ISO-8859-1;QUOTED-PRINTABLE:=FC\n")),
            "JobTitle=ü\nNote=ü\n");
}

}  // namespace
}  // namespace ox::vcard
