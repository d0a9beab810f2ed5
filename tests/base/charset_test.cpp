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

}  // namespace
}  // namespace ox
