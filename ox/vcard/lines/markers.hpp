#pragma once

#include <string_view>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {

// "KEYWORD:VCARD" in any case, with the blanks, NULs and the byte order mark that some programs
// leave around it. The keyword is given in upper case.
inline bool isMarker(std::string_view line, std::string_view keyword) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (line.starts_with(kByteOrderMark)) line.remove_prefix(kByteOrderMark.size());
  if (!startsWithWord(line, keyword)) return false;
  line = trimmed(line.substr(keyword.size()));
  if (line.empty() || line.front() != ':') return false;
  line = trimmed(line.substr(1));
  while (!line.empty() && line.back() == '\0') line.remove_suffix(1);
  return isWord(trimmed(line), "VCARD");
}

// The first letter decides nearly always, so that asking every line costs next to nothing.
inline bool isBegin(std::string_view line) {
  return line.size() >= 11 && (upper(line.front()) == 'B' || line.front() == '\xEF') &&
         isMarker(line, "BEGIN");
}

inline bool isEnd(std::string_view line) {
  return line.size() >= 9 && upper(line.front()) == 'E' && isMarker(line, "END");
}

inline bool isBlankLine(std::string_view line) {
  return trimmed(line).empty();
}

// False of a text that was cut short within a card: none of its lines is an END.
inline bool hasEnd(std::string_view text) {
  while (!text.empty()) {
    const auto start = text.find_last_of("\r\n") + 1;  // 0 where there is none
    if (isEnd(text.substr(start))) return true;
    text = text.substr(0, start == 0 ? 0 : start - 1);
  }
  return false;
}

}  // namespace ox::vcard
