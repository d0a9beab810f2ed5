#include "ox/vcard/lines/uri.hpp"

#include <algorithm>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/decode.hpp"

namespace ox::vcard {
namespace {

bool isUnreserved(char c) {
  return isLetter(c) || isDigit(c) || c == '-' || c == '.' || c == '_' || c == '~';
}

bool isUriLetter(char c) {
  constexpr std::string_view kReserved = ":/?#[]@!$&'()*+,;=%";
  return isUnreserved(c) || kReserved.find(c) != std::string_view::npos;
}

}  // namespace

std::string_view schemeOf(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == 0 || colon == std::string_view::npos || !isLetter(text.front())) return {};
  const auto scheme = text.substr(0, colon);
  const bool wellFormed = std::all_of(scheme.begin(), scheme.end(), [](char c) {
    return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
  });
  return wellFormed ? scheme : std::string_view();
}

bool isUri(std::string_view text) {
  const auto scheme = schemeOf(text);
  return !scheme.empty() && text.size() > scheme.size() + 1 &&
         std::all_of(text.begin(), text.end(), isUriLetter);
}

void appendPercentEncoded(std::string_view bytes, std::string& out) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (const char c : bytes) {
    if (isUnreserved(c) || c == '@' || c == '+') {
      out += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    out += '%';
    out += kDigits[byte >> 4U];
    out += kDigits[byte & 15U];
  }
}

std::string percentDecoded(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const int byte = text[at] == '%' ? hexByte(text, at + 1) : -1;
    out += byte < 0 ? text[at] : static_cast<char>(byte);
    if (byte >= 0) at += 2;
  }
  return out;
}

}  // namespace ox::vcard
