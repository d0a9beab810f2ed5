#pragma once

#include <string>
#include <string_view>

namespace ox::sync {

// What a URL or an href consists of (RFC 3986); nothing is decoded.
struct UrlParts {
  std::string scheme;     // lower case; empty: a path alone
  std::string authority;  // lower case, without user and with no default port; empty: likewise
  std::string path;       // "/" when there is none
};

UrlParts urlParts(std::string_view url);
// "https://host:port", as secrets are accepted for it.
std::string originOf(std::string_view url);
// The name in a URL: lower case, no port, an IPv6 address in its brackets.
std::string hostOf(std::string_view url);

// What an href in the answer of that URL means, as a URL that can be asked: what a URL cannot hold
// is percent-encoded, all else stays as the server has spelled it.
std::string askableUrl(std::string_view base, std::string_view href);

// The path that an href in the answer of that URL names, as bytes, for comparing: percent-decoded,
// but for "%2F" and "%25", which would say something else when decoded. Empty when it has dot
// segments, or lies on another host. Neither scheme nor port count: a server behind another one
// does not always know them.
std::string comparablePath(std::string_view base, std::string_view href);

// The text for a place within XML; what XML cannot hold becomes U+FFFD.
std::string escapedXml(std::string_view text);

}  // namespace ox::sync
