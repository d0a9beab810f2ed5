#include "ox/formats/ldif/distinguished_name.hpp"

#include "ox/base/text/ascii_case.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"
#include "ox/vcard/lines/uri.hpp"

namespace ox::formats {
namespace {

constexpr std::string_view kUid = "uid=";
constexpr std::string_view kSpecial = ",+\"\\<>;=";

// The first character that parts names or their parts, outside of escapes.
std::size_t findBare(std::string_view text, std::string_view marks, std::size_t at) {
  for (; at < text.size(); ++at) {
    if (text[at] == '\\') {
      ++at;
    } else if (marks.find(text[at]) != std::string_view::npos) {
      return at;
    }
  }
  return std::string_view::npos;
}

std::string unescapedValue(std::string_view text) {
  std::string value;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = text[i] == '\\' ? vcard::hexByte(text, i + 1) : -1;
    if (byte >= 0) {
      value += static_cast<char>(byte);
      i += 2;
    } else if (text[i] == '\\' && i + 1 < text.size()) {
      value += text[++i];
    } else {
      value += text[i];
    }
  }
  return value;
}

// Without case, and the blanks around commas and equals signs.
std::string commonName(std::string_view name) {
  std::string common;
  for (const char c : lowerCase(vcard::trimmed(name))) {
    const bool isMark = c == ',' || c == '=';
    while (isMark && common.ends_with(' ')) common.pop_back();
    const bool isFill = c == ' ' && (common.ends_with(',') || common.ends_with('='));
    if (!isFill) common += c;
  }
  return common;
}

}  // namespace

std::string nameOfUid(std::string_view uid) {
  std::string name(kUid);
  const auto key = uidKey(uid);
  for (const auto c : key.empty() ? uid : key) {
    const bool isOuterBlank = c == ' ' || c == '#';
    if (kSpecial.find(c) != std::string_view::npos || isOuterBlank) name += '\\';
    name += c;
  }
  return name;
}

bool isNameOfUid(std::string_view name) {
  return name.size() > kUid.size() && lowerCase(name.substr(0, kUid.size())) == kUid &&
         findBare(name, ",+;", 0) == std::string_view::npos;
}

std::string uidOfName(std::string_view name) {
  name = vcard::trimmed(name);
  if (name.empty()) return {};
  if (isNameOfUid(name)) return unescapedValue(name.substr(kUid.size()));
  std::string uid = "ldap:///";
  vcard::appendPercentEncoded(commonName(name), uid);
  return uid;
}

}  // namespace ox::formats
