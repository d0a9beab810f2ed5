#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/content_line.hpp"

namespace ox::vcard {

// RFC 2045, section 6.7, appended to `out`; soft line breaks are already taken out. What is no
// escape stays as it is.
void appendQuotedPrintable(std::string_view text, std::string& out);

// RFC 4648, section 4; blanks and line breaks are passed over, the padding may be missing. Missing
// when anything else stands in the text, or nothing at all.
std::optional<std::string> decodeBase64(std::string_view text);
// True when the text consists of the letters of base64 alone, and of at least one of them.
bool looksLikeBase64(std::string_view text);

// The byte that two hex digits at that place stand for; -1 when they are none.
int hexByte(std::string_view text, std::size_t at);

// The escapes of a text value undone: \n and \N become a line feed, in vCard 2.1 too, which knows
// neither but whose programs write them; a backslash before punctuation goes away; any other stays,
// so that no text is lost.
std::string unescaped(std::string_view text);

// The components of a structured value, split at semicolons that are not escaped, still escaped and
// with the blanks around them. The last component takes whatever is left; components that are not
// there are empty.
template <std::size_t N>
std::array<std::string_view, N> wholeComponents(std::string_view value) {
  std::array<std::string_view, N> parts{};
  std::size_t part = 0;
  std::size_t from = 0;
  for (std::size_t i = 0; part + 1 < N && i < value.size(); ++i) {
    if (value[i] == '\\') {
      ++i;
    } else if (value[i] == ';') {
      parts[part++] = value.substr(from, i - from);
      from = i + 1;
    }
  }
  parts[part] = value.substr(from);
  return parts;
}

// The same without the blanks, which many programs leave around components.
template <std::size_t N>
std::array<std::string_view, N> components(std::string_view value) {
  auto parts = wholeComponents<N>(value);
  for (auto& part : parts) part = trimmed(part);
  return parts;
}

// As unescaped; in vCard 3.0 and 4.0 commas that are not escaped part a list, whose elements come
// out with the separator between them.
std::string unescapedList(std::string_view text, Dialect dialect, std::string_view separator);

}  // namespace ox::vcard
