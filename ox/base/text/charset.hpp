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

}  // namespace ox
