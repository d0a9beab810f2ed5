#include "ox/vcard/unmodelled/line_form.hpp"

#include <algorithm>
#include <iterator>

#include "ox/base/base64.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/unmodelled/media_line.hpp"
#include "ox/vcard/unmodelled/value_form.hpp"

namespace ox::vcard {
namespace {

bool isControl(char c) {
  return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
}

bool isNameLetter(char c) {
  return isLetter(c) || isDigit(c) || c == '-';
}

// The length of the name at the front of the text.
std::size_t nameLength(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && isNameLetter(text[at])) ++at;
  return at;
}

// The end of one parameter value: in quotes, or without anything that would need them. npos when it
// is neither.
std::size_t endOfValue(std::string_view text, std::size_t at) {
  constexpr auto npos = std::string_view::npos;
  if (at < text.size() && text[at] == '"') {
    const auto close = text.find('"', at + 1);
    if (close == npos) return npos;
    const auto inside = text.substr(at, close - at);
    return std::any_of(inside.begin(), inside.end(), isControl) ? npos : close + 1;
  }
  while (at < text.size() && text[at] != ',' && text[at] != ';' && text[at] != ':') {
    if (text[at] == '"' || isControl(text[at])) return npos;
    ++at;
  }
  return at;
}

// The end of the parameters at that place; npos when they are not well-formed.
std::size_t endOfParameters(std::string_view text, std::size_t at, CardVersion version) {
  constexpr auto npos = std::string_view::npos;
  while (at < text.size() && text[at] == ';') {
    const auto name = text.substr(at + 1, nameLength(text.substr(at + 1)));
    at += 1 + name.size();
    if (name.empty() || at == text.size() || text[at] != '=') return npos;
    if (version == CardVersion::V40 && (isWord(name, "ENCODING") || isWord(name, "CHARSET"))) {
      return npos;
    }
    do {
      at = endOfValue(text, at + 1);
      if (at == npos) return npos;
    } while (at < text.size() && text[at] == ',');
  }
  return at;
}

bool hasEncoding(std::string_view parameters) {
  constexpr std::string_view kEncoding = ";ENCODING=";
  for (; parameters.size() > kEncoding.size(); parameters.remove_prefix(1)) {
    if (startsWithWord(parameters, kEncoding)) return true;
  }
  return false;
}

void appendWithEscapedBreaks(std::string_view value, std::string& out) {
  for (const char c : value) {
    if (c == '\n' || c == '\r') {
      out += "\\n";
    } else {
      out += c;
    }
  }
}

// True for a head that vCard 3.0 and 4.0 spell the same way.
bool isPreservedAsItStands(const ContentLine& line) {
  if (!line.charset.empty() || line.encoding == Encoding::QuotedPrintable) return false;
  return std::all_of(line.parameters.begin(), line.parameters.end(), [&](const Parameter& each) {
    if (each.name.empty() || each.kind == ParameterKind::Charset) return false;
    return each.kind != ParameterKind::Encoding ||
           (line.encoding == Encoding::Base64 && each.value == "b");
  });
}

void appendRespeltHead(const ContentLine& line, std::string& out) {
  if (!line.group.empty()) out.append(line.group) += '.';
  out.append(line.name);
  for (const auto& parameter : line.parameters) {
    if (parameter.kind == ParameterKind::Encoding || parameter.kind == ParameterKind::Charset) {
      continue;
    }
    (out += ';').append(parameter.name.empty() ? "TYPE" : parameter.name) += '=';
    out.append(parameter.value);
  }
  if (line.encoding == Encoding::Base64) out += ";ENCODING=b";
  out += ':';
}

void appendHead(const ContentLine& line, std::string& out) {
  if (isPreservedAsItStands(line)) {
    out.append(line.head) += ':';
  } else {
    appendRespeltHead(line, out);
  }
}

}  // namespace

bool isName(std::string_view text) {
  return !text.empty() && nameLength(text) == text.size();
}

std::string groupKey(std::string_view group) {
  std::string key(group);
  std::transform(key.begin(), key.end(), key.begin(), upper);
  return key;
}

bool isWellFormed(std::string_view line, CardVersion version) {
  const auto name = lineNameOf(line);
  const bool hasGroup = name.name.data() != line.data();
  if (!isName(name.name) || (hasGroup && !isName(name.group))) return false;
  const auto colon = endOfParameters(line, name.end, version);
  if (colon == std::string_view::npos || colon >= line.size() || line[colon] != ':') return false;
  const auto value = line.substr(colon + 1);
  if (hasEncoding(line.substr(name.end, colon - name.end))) return bytesOfBase64(value).has_value();
  return std::none_of(value.begin(), value.end(), isControl);
}

bool areAdmitted(std::string_view parameters, CardVersion version) {
  return endOfParameters(parameters, 0, version) == parameters.size();
}

void appendPreserved(const ContentLine& line, Dialect dialect, std::string& out) {
  out.reserve(out.size() + line.head.size() + line.value.size() + 1);
  if (isMediaByData(line)) {
    out += mediaLine(line, CardVersion::V30).value_or(std::string());
    return;
  }
  appendHead(line, out);
  if (line.encoding == Encoding::Base64) {
    std::copy_if(line.value.begin(), line.value.end(), std::back_inserter(out),
                 [](char c) { return !isBlank(c); });
  } else if (line.encoding == Encoding::QuotedPrintable || !line.charset.empty()) {
    appendWithEscapedBreaks(canonicalValue(line, dialect), out);
  } else {
    out += canonicalValue(line, dialect);
  }
}

void appendPreservedAsRead(const ContentLine& line, std::string& out) {
  auto text = line;
  text.encoding = Encoding::None;
  text.charset = {};
  appendHead(text, out);
  out.append(text.value);
}

}  // namespace ox::vcard
