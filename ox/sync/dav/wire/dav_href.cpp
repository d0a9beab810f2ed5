#include "ox/sync/dav/wire/dav_href.hpp"

#include <cstddef>
#include <optional>

#include "ox/base/text/utf8.hpp"
#include "ox/sync/http/url.hpp"
#include "ox/sync/remote/remote_error.hpp"

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

// "https://host/path" and "//host/path" (RFC 3986, section 4.2), not "/path" and "path".
bool namesHost(std::string_view href) {
  const auto first = href.substr(0, href.find_first_of("/?#"));
  return href.starts_with("//") || first.find(':') != std::string_view::npos;
}

// With what follows the path.
std::string pathOf(const Url& url) {
  const auto host = url.text.find("://") + 3;
  const auto path = url.text.find('/', host);
  return path == std::string::npos ? "/" : url.text.substr(path);
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

std::string hostOf(const std::string& url) {
  return parsedUrl(url).host;
}

std::string askablePath(const std::string& base, const std::string& href) {
  if (href.starts_with('/') && !namesHost(href)) return askable(href);
  if (namesHost(href)) return askable(pathOf(resolvedUrl(parsedUrl(base), href)));
  return askable(absolutePath(pathOf(parsedUrl(base)), href));
}

std::string askableUrl(const std::string& base, const std::string& href) {
  const auto from = parsedUrl(base);
  const auto at = namesHost(href) ? resolvedUrl(from, href) : from;
  const auto origin = at.text.substr(0, at.text.find('/', at.text.find("://") + 3));
  return origin + askablePath(base, href);
}

std::string comparablePath(const std::string& base, const std::string& href) {
  std::string path;
  if (!namesHost(href)) {
    path = decoded(href.starts_with('/') ? href : absolutePath(pathOf(parsedUrl(base)), href));
  } else {
    try {
      const auto from = parsedUrl(base);
      const auto at = resolvedUrl(from, href);
      if (at.host == from.host) path = decoded(pathOf(at));
    } catch (const RemoteError&) {
      return {};  // of another scheme, or no URL at all
    }
  }
  return hasDotSegments(path) ? std::string() : path;
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
