#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ox {

// The bytes, written in the charset of that name (IANA names and their usual aliases, any case), as
// UTF-8; missing when no such charset is known. What the charset cannot hold becomes U+FFFD.
// "ISO-8859-1", "US-ASCII" and "GB2312" are read as the larger sets that programs mean by them:
// windows-1252, windows-1252 and GBK. Safe from any thread.
std::optional<std::string> utf8FromCharset(std::string_view bytes, std::string_view charset);

// The charset that bytes which are no UTF-8 are most probably written in: one of the windows-125x
// family, KOI8-R, Shift_JIS, EUC-JP, EUC-KR, Big5 or GB18030. The more text, the better the guess;
// windows-1252 when nothing speaks for another. Safe from any thread.
std::string detectCharset(std::string_view bytes);

}  // namespace ox
