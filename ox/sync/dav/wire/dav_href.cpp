#include "ox/sync/dav/wire/dav_href.hpp"

#include <cstddef>
#include <optional>

#include "ox/base/text/ascii_case.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox::sync {

namespace {

std::optional<int> hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return std::nullopt;
}

// The byte that "%41" at that place stands for.
std::optional<char> encodedByte(std::string_view text, std::size_t at) {
  if (text[at] != '%' || at + 2 >= text.size()) return std::nullopt;
  const auto high = hexDigit(text[at + 1]);
  const auto low = hexDigit(text[at + 2]);
  if (!high || !low) return std::nullopt;
  return static_cast<char>(*high * 16 + *low);
}

std::string decoded(std::string_view path) {
  std::string bytes;
  bytes.reserve(path.size());
  for (std::size_t at = 0; at < path.size(); ++at) {
    const auto byte = encodedByte(path, at);
    const char c = byte.value_or(path[at]);
    if (byte) at += 2;
    if (c == '%') {
      bytes += "%25";
    } else if (byte && c == '/') {
      bytes += "%2F";
    } else {
      bytes += c;
    }
  }
  return bytes;
}

bool hasDotSegments(std::string_view path) {
  while (!path.empty()) {
    const auto end = path.find('/');
    const auto segment = path.substr(0, end);
    if (segment == "." || segment == "..") return true;
    if (end == std::string_view::npos) break;
    path.remove_prefix(end + 1);
  }
  return false;
}

bool isScheme(std::string_view text) {
  return !text.empty() &&
         text.find_first_not_of(
             "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+-.") ==
             std::string_view::npos;
}

std::string authorityOf(std::string_view scheme, std::string_view text) {
  if (const auto user = text.rfind('@'); user != std::string_view::npos) {
    text.remove_prefix(user + 1);
  }
  auto authority = lowerCase(text);
  const std::string_view standard = scheme == "https" ? ":443" : scheme == "http" ? ":80" : ":";
  if (authority.ends_with(standard)) authority.resize(authority.size() - standard.size());
  return authority;
}

std::string hostWithin(const std::string& authority) {
  const auto port = authority.rfind(':');
  const auto bracket = authority.rfind(']');
  const bool hasPort =
      port != std::string::npos && (bracket == std::string::npos || port > bracket);
  return hasPort ? authority.substr(0, port) : authority;
}

// A path without slash at its begin is one within the collection that was asked.
std::string absolutePath(std::string_view basePath, std::string_view path) {
  if (path.starts_with('/')) return std::string(path);
  return std::string(basePath.substr(0, basePath.rfind('/') + 1)) + std::string(path);
}

std::string askable(std::string_view path) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kNever = "\"#<>\\^`{|}";
  std::string url;
  url.reserve(path.size());
  for (std::size_t at = 0; at < path.size(); ++at) {
    const auto c = path[at];
    const auto byte = static_cast<unsigned char>(c);
    const bool isStrayPercent = c == '%' && !encodedByte(path, at);
    if (byte <= 0x20 || byte >= 0x7F || kNever.find(c) != std::string_view::npos ||
        isStrayPercent) {
      url += '%';
      url += kDigits[byte >> 4];
      url += kDigits[byte & 15];
    } else {
      url += c;
    }
  }
  return url;
}

}  // namespace

UrlParts urlParts(std::string_view url) {
  UrlParts parts;
  const auto colon = url.find("://");
  if (colon != std::string_view::npos && isScheme(url.substr(0, colon))) {
    parts.scheme = lowerCase(url.substr(0, colon));
    url.remove_prefix(colon + 1);
  }
  // "//host/path" is another host with the scheme of the base (RFC 3986, section 4.2).
  if (url.starts_with("//")) {
    url.remove_prefix(2);
    const auto end = url.find_first_of("/?#");
    parts.authority = authorityOf(parts.scheme, url.substr(0, end));
    url = end == std::string_view::npos ? std::string_view{} : url.substr(end);
  }
  parts.path = url.empty() || url.front() == '?' ? '/' + std::string(url) : std::string(url);
  return parts;
}

std::string originOf(std::string_view url) {
  const auto parts = urlParts(url);
  return parts.scheme + "://" + parts.authority;
}

std::string hostOf(std::string_view url) {
  return hostWithin(urlParts(url).authority);
}

std::string askableUrl(std::string_view base, std::string_view href) {
  const auto from = urlParts(base);
  const auto to = urlParts(href);
  const auto& scheme = to.scheme.empty() ? from.scheme : to.scheme;
  const auto& authority = to.authority.empty() ? from.authority : to.authority;
  return scheme + "://" + authority + askable(absolutePath(from.path, to.path));
}

std::string comparablePath(std::string_view base, std::string_view href) {
  const auto from = urlParts(base);
  const auto to = urlParts(href);
  if (!to.authority.empty() && hostWithin(to.authority) != hostWithin(from.authority)) return {};
  auto path = decoded(absolutePath(from.path, to.path));
  if (hasDotSegments(path)) return {};
  return path;
}

std::string escapedXml(std::string_view text) {
  const auto valid = validUtf8(std::string(text));
  std::string escaped;
  escaped.reserve(valid.size());
  for (const char c : valid) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else if (c == '>') {
      escaped += "&gt;";
    } else if (c == '"') {
      escaped += "&quot;";
    } else if (c == '\r') {
      escaped += "&#13;";
    } else if (byte < 0x20 && c != '\t' && c != '\n') {
      escaped += "\xEF\xBF\xBD";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

}  // namespace ox::sync
