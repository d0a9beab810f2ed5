#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ox::vcard {

// How values are escaped and lines folded: vCard 2.1, or 3.0 and 4.0, which agree in both.
enum class Dialect : std::uint8_t { V21, V30 };

enum class Encoding : std::uint8_t { None, QuotedPrintable, Base64 };

// What a parameter is about. A bare word of vCard 2.1 is a Type unless it names an encoding.
enum class ParameterKind : std::uint8_t {
  Type,
  Pref,
  Encoding,
  Charset,
  Value,
  ServiceType,
  UserName,
  UserIdentifier,
  SortAs,
  OmittedYear,
  Label,
  Other,
};

inline constexpr std::uint32_t bitOf(ParameterKind kind) {
  return 1U << static_cast<unsigned>(kind);
}

struct Parameter {
  std::string_view name;   // empty for a bare word
  std::string_view value;  // as it stands, quotes and escapes included
  ParameterKind kind = ParameterKind::Other;
};

// One content line (RFC 6350, section 3.3), unfolded. Everything is borrowed from whoever made it,
// until it makes the next one.
struct ContentLine {
  std::size_t number = 0;  // of its first physical line
  std::string_view head;   // before the colon: group, name and parameters
  std::string_view group;  // "item1" of "item1.TEL"; empty without one
  std::string_view name;
  std::vector<Parameter> parameters;
  std::string_view value;  // UTF-8; base64 is still encoded
  Encoding encoding = Encoding::None;
  std::string_view charset;  // of a CHARSET parameter

  const Parameter* find(ParameterKind kind) const;
};

// Group and name at the front of a line, as every reader takes them. Several dots are one group.
struct LineName {
  std::string_view group;
  std::string_view name;
  std::size_t end = 0;  // of the name; 0: the line starts with none
};
LineName lineNameOf(std::string_view line);

// Splits the head of a line, up to the colon that starts its value, and fills everything but number
// and value. The length of the head; npos when the text is no content line.
std::size_t parseHead(std::string_view text, ContentLine& line);

// The words of a parameter value: split at commas, in or out of quotes alike, and at quotes, since
// no parameter could say a word with one in it.
template <typename Use>
void forEachWord(std::string_view value, Use&& use) {
  std::size_t from = 0;
  while (from <= value.size()) {
    auto end = from;
    while (end < value.size() && value[end] != ',' && value[end] != '"') ++end;
    auto word = value.substr(from, end - from);
    while (!word.empty() && word.front() == ' ') word.remove_prefix(1);
    while (!word.empty() && word.back() == ' ') word.remove_suffix(1);
    if (!word.empty()) use(word);
    from = end + 1;
  }
}

// Appends the TYPE parameter that says one such word: what ends a parameter may stand in a word
// that stood in quotes.
void appendTypeWord(std::string_view word, std::string& parameters);

// The value of a parameter as text: quotes taken off, the circumflex escapes of RFC 6868 undone.
std::string parameterText(const Parameter& parameter);

}  // namespace ox::vcard
