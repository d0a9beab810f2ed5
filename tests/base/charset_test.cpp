#include "ox/base/text/charset.hpp"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace ox {
namespace {

struct Row {
  std::string charset;
  std::string bytes;
  std::string text;
};

TEST(Charset, ConvertsByNameInAnySpelling) {
  const std::vector<Row> rows = {
      {"ISO-8859-1", "J\xFCrg \x80", "Jürg €"},
      {"iso_8859-1", "\xE9", "é"},
      {"us-ascii", "a\xE9", "aé"},
      {"windows-1250", "\xA3", "Ł"},
      {"Windows-1253", "\xE1", "α"},
      {"SHIFT_JIS", "\x83\x5C\x8E\x52\\", "ソ山\\"},
      {"GB2312", "\xCD\xF5", "王"},
      {"gb18030", "\x81\x30\x84\x36", "\u00A5"},
      {"Big5", "\xB3\xAF", "陳"},
      {"EUC-KR", "\xB1\xE8", "김"},
      {"ISO-2022-JP", "\x1B$B;3\x1B(B", "山"},
      {"UTF-8", "a\xFF", "a\xEF\xBF\xBD"},
      {"Shift_JIS", "a\x83", "a\xEF\xBF\xBD"},
      {"windows-1252", "", ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(utf8FromCharset(row.bytes, row.charset), row.text) << row.charset;
  }
  EXPECT_FALSE(utf8FromCharset("a", "x-no-such-charset"));
  EXPECT_FALSE(utf8FromCharset("a", ""));
}

TEST(Charset, ConvertsTextsOfAnyLength) {
  for (std::size_t count = 1000; count < 1060; ++count) {
    std::string bytes;
    std::string text;
    bytes.append(count, 'a');
    text.append(count, 'a');
    // A character beyond the basic plane, so that a surrogate pair meets every block border.
    bytes += "\x94\x39\xFC\x36";
    text += "😀";
    EXPECT_EQ(utf8FromCharset(bytes, "GB18030"), text) << count;
  }
}

struct DetectionRow {
  std::string charset;
  std::string bytes;
};

TEST(Charset, IsDetectedFromAFewNames) {
  const std::vector<DetectionRow> rows = {
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
  };
  for (const auto& row : rows) EXPECT_EQ(detectCharset(row.bytes), row.charset) << row.bytes;
}

}  // namespace
}  // namespace ox
