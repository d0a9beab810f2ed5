#include "ox/vcard/lines/structured_value.hpp"

#include <algorithm>
#include <vector>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/line_writer.hpp"

namespace ox::vcard {
namespace {

constexpr auto npos = std::string_view::npos;

// The first of that character at or after a place that no backslash stands before.
std::size_t findBare(std::string_view text, char wanted, std::size_t at) {
  for (; at < text.size(); ++at) {
    if (text[at] == '\\') {
      ++at;
    } else if (text[at] == wanted) {
      return at;
    }
  }
  return npos;
}

void appendText(std::string_view raw, std::string& out) {
  const auto text = unescaped(raw);
  appendTextEscaped(CardText(text).view(), out);
}

void appendPieces(std::string_view raw, char mark, std::string& out) {
  std::size_t from = 0;
  for (auto at = findBare(raw, mark, 0); at != npos; at = findBare(raw, mark, from)) {
    appendText(raw.substr(from, at - from), out);
    out += mark;
    from = at + 1;
  }
  appendText(raw.substr(from), out);
}

}  // namespace

bool hasList(std::string_view value, Dialect dialect) {
  return dialect == Dialect::V30 && findBare(value, ',', 0) != npos;
}

std::vector<std::string_view> partsOf(std::string_view value, char mark) {
  std::vector<std::string_view> parts;
  std::size_t from = 0;
  for (auto at = findBare(value, mark, 0); at != npos; at = findBare(value, mark, from)) {
    parts.push_back(value.substr(from, at - from));
    from = at + 1;
  }
  parts.push_back(value.substr(from));
  return parts;
}

bool areBlank(std::string_view components) {
  const CardText written(components);
  return std::ranges::all_of(written.view(), [](char c) { return c == ';' || isBlank(c); });
}

std::string canonicalText(std::string_view value) {
  std::string out;
  appendText(value, out);
  return out;
}

std::string canonicalPieces(std::string_view value, char mark) {
  std::string out;
  appendPieces(value, mark, out);
  return out;
}

std::string canonicalComponents(std::span<const std::string_view> components, Dialect dialect) {
  std::string out;
  for (std::size_t i = 0; i < components.size(); ++i) {
    if (i > 0) out += ';';
    // Control characters may have stood between a blank and the mark.
    std::string component;
    if (dialect == Dialect::V21) {
      appendText(components[i], component);
    } else {
      appendPieces(components[i], ',', component);
    }
    out += trimmed(component);
  }
  return out;
}

std::string canonicalComponents(std::string_view value, Dialect dialect) {
  return canonicalComponents(partsOf(value, ';'), dialect);
}

std::string canonicalUnknown21(std::string_view value) {
  std::string out;
  std::string text;
  const auto append = [&] {
    appendTextEscaped(CardText(text).view(), out);
    text.clear();
  };
  for (std::size_t at = 0; at < value.size(); ++at) {
    const char next = at + 1 < value.size() ? value[at + 1] : '\0';
    const bool escapes = next == ';' || next == ',' || next == '\\';
    if (value[at] == '\\' && escapes) {
      text += next;
      ++at;
    } else if (value[at] == ';') {
      append();
      out += ';';
    } else {
      text += value[at];
    }
  }
  append();
  return out;
}

}  // namespace ox::vcard
