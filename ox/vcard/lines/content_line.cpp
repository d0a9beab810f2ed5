#include "ox/vcard/lines/content_line.hpp"

#include <array>
#include <cassert>
#include <cstdint>

#include "ox/vcard/lines/ascii.hpp"

namespace ox::vcard {
namespace {

struct KindRow {
  std::string_view name;
  ParameterKind kind;
};

constexpr std::array kKinds = {
    KindRow{"TYPE", ParameterKind::Type},
    KindRow{"PREF", ParameterKind::Pref},
    KindRow{"ENCODING", ParameterKind::Encoding},
    KindRow{"CHARSET", ParameterKind::Charset},
    KindRow{"VALUE", ParameterKind::Value},
    KindRow{"X-SERVICE-TYPE", ParameterKind::ServiceType},
    KindRow{"SERVICE-TYPE", ParameterKind::ServiceType},
    KindRow{"X-USER", ParameterKind::UserName},
    KindRow{"USERNAME", ParameterKind::UserName},
    KindRow{"X-USERID", ParameterKind::UserIdentifier},
    KindRow{"SORT-AS", ParameterKind::SortAs},
    KindRow{"X-APPLE-OMIT-YEAR", ParameterKind::OmittedYear},
    KindRow{"LABEL", ParameterKind::Label},
};

constexpr auto npos = std::string_view::npos;

ParameterKind kindOf(std::string_view name) {
  for (const auto& row : kKinds) {
    if (isWord(name, row.name)) return row.kind;
  }
  return ParameterKind::Other;
}

bool readEncoding(std::string_view word, Encoding& encoding) {
  if (isWord(word, "B") || isWord(word, "BASE64")) {
    encoding = Encoding::Base64;
  } else if (isWord(word, "QUOTED-PRINTABLE")) {
    encoding = Encoding::QuotedPrintable;
  } else {
    return isWord(word, "8BIT") || isWord(word, "7BIT");
  }
  return true;
}

// What a character may be in the head of a line.
enum Role : std::uint8_t {
  kInName = 1,        // RFC 6350, section 3.3, and the underscore, which some programs use
  kEndsWord = 2,      // ends a parameter's name, or a bare word
  kEndsOrQuotes = 4,  // ends a parameter's value, or starts one in quotes
};

constexpr auto kRoles = [] {
  std::array<std::uint8_t, 256> roles{};
  for (std::size_t i = 0; i < roles.size(); ++i) {
    const char c = static_cast<char>(i);
    unsigned bits = 0;
    if (isLetter(c) || isDigit(c) || c == '-' || c == '_') bits |= kInName;
    if (c == '=' || c == ';' || c == ':' || c == '"') bits |= kEndsWord;
    if (c == ';' || c == ':' || c == '"') bits |= kEndsOrQuotes;
    roles[i] = static_cast<std::uint8_t>(bits);
  }
  return roles;
}();

bool has(char c, Role role) {
  return (kRoles[static_cast<unsigned char>(c)] & role) != 0;
}

// The end of the name that starts at that place.
std::size_t endOfName(std::string_view text, std::size_t at) {
  while (at < text.size() && has(text[at], kInName)) ++at;
  return at;
}

// The end of a parameter's value: the next semicolon or colon outside of quotes. A quote without
// its partner is a character like any other.
std::size_t endOfValue(std::string_view text, std::size_t at) {
  for (; at < text.size(); ++at) {
    if (!has(text[at], kEndsOrQuotes)) continue;
    if (text[at] != '"') break;
    const auto close = text.find('"', at + 1);
    if (close != npos) at = close;
  }
  return at;
}

// One name has a blank in it. Where it ends; the given end for any other.
std::size_t endOfNameWithBlank(std::string_view line, std::size_t start, std::size_t end) {
  constexpr std::string_view kName = "X-GOOGLE TALK";
  const auto whole = line.substr(start, kName.size());
  if (end - start != kName.find(' ') || !isWord(whole, kName)) return end;
  return start + kName.size();
}

// Asked of every line.
inline LineName nameAtFront(std::string_view line) {
  LineName result;
  std::size_t start = 0;
  auto end = endOfName(line, 0);
  while (end < line.size() && line[end] == '.') {
    result.group = line.substr(0, end);
    start = end + 1;
    end = endOfName(line, start);
  }
  if (end == start) return {};
  end = endOfNameWithBlank(line, start, end);
  result.name = line.substr(start, end - start);
  result.end = end;
  return result;
}

std::string_view withoutQuotes(std::string_view text) {
  text = trimmed(text);
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
    return text.substr(1, text.size() - 2);
  }
  return text;
}

// One parameter, its place after the semicolon. Where it ends.
std::size_t parseParameter(std::string_view text, std::size_t at, ContentLine& line) {
  std::size_t mark = at;
  while (mark < text.size() && !has(text[mark], kEndsWord)) ++mark;
  Parameter parameter;
  std::size_t end = 0;
  if (mark < text.size() && text[mark] == '=') {
    parameter.name = trimmed(text.substr(at, mark - at));
    end = endOfValue(text, mark + 1);
    parameter.value = text.substr(mark + 1, end - mark - 1);
    parameter.kind = kindOf(parameter.name);
  } else {
    end = endOfValue(text, at);
    parameter.value = text.substr(at, end - at);
  }
  if (parameter.name.empty()) {  // also where nothing but a name is missing
    parameter.value = trimmed(parameter.value);
    if (parameter.value.empty()) return end;
    parameter.kind = ParameterKind::Type;
    if (readEncoding(parameter.value, line.encoding)) parameter.kind = ParameterKind::Encoding;
  }
  if (parameter.kind == ParameterKind::Encoding) {
    readEncoding(withoutQuotes(parameter.value), line.encoding);
  } else if (parameter.kind == ParameterKind::Charset) {
    line.charset = withoutQuotes(parameter.value);
  }
  line.parameters.push_back(parameter);
  return end;
}

}  // namespace

const Parameter* ContentLine::find(ParameterKind kind) const {
  for (const auto& parameter : parameters) {
    if (parameter.kind == kind) return &parameter;
  }
  return nullptr;
}

LineName lineNameOf(std::string_view line) {
  return nameAtFront(line);
}

std::size_t parseHead(std::string_view text, ContentLine& line) {
  line.parameters.clear();
  line.encoding = Encoding::None;
  line.charset = {};
  const auto front = nameAtFront(text);
  line.group = front.group;
  line.name = front.name;
  auto at = front.end;
  while (at < text.size() && isBlank(text[at])) ++at;
  if (line.name.empty() || at == text.size() || (text[at] != ':' && text[at] != ';')) return npos;
  while (at < text.size() && text[at] == ';') at = parseParameter(text, at + 1, line);
  if (at >= text.size()) return npos;
  assert(text[at] == ':' && at >= line.name.size());
  line.head = text.substr(0, at);
  return at;
}

void appendTypeWord(std::string_view word, std::string& parameters) {
  const std::string_view quote = word.find_first_of(";:") == npos ? "" : "\"";
  parameters.append(";TYPE=").append(quote).append(word).append(quote);
}

std::string parameterText(const Parameter& parameter) {
  const auto raw = withoutQuotes(parameter.value);
  std::string text;
  text.reserve(raw.size());
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const char next = raw[i] == '^' && i + 1 < raw.size() ? raw[i + 1] : '\0';
    if (next == 'n' || next == '^' || next == '\'') {
      text += next == 'n' ? '\n' : next == '\'' ? '"' : '^';
      ++i;
    } else {
      text += raw[i];
    }
  }
  return text;
}

}  // namespace ox::vcard
