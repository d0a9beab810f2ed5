#pragma once

#include <string>
#include <string_view>

namespace ox::sync {

// The host of a URL: lower case, an IPv6 address in its brackets. Throws RemoteError (Usage).
std::string hostOf(const std::string& url);

// What an href in the answer of that URL means, as a URL that can be asked: what a URL cannot hold
// is percent-encoded, all else stays as the server has spelled it. Throws RemoteError (Protocol)
// for what is no URL of http or https.
std::string askableUrl(const std::string& base, const std::string& href);
// The same without scheme and host.
std::string askablePath(const std::string& base, const std::string& href);

// The path that an href in the answer of that URL names, as bytes, for comparing: percent-decoded,
// but for "%2F" and "%25", which would say something else when decoded. Empty when it has dot
// segments, or lies on another host. Neither scheme nor port count: a server behind another one
// does not always know them.
std::string comparablePath(const std::string& base, const std::string& href);

// The text for a place within XML; what XML cannot hold becomes U+FFFD.
std::string escapedXml(std::string_view text);

}  // namespace ox::sync
