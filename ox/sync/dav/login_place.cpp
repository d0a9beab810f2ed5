#include "ox/sync/dav/login_place.hpp"

#include <string_view>

#include "ox/base/text/ascii_case.hpp"
#include "ox/sync/dav/wire/dav_href.hpp"
#include "ox/sync/http/url.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

// RFC 6764, section 5. Not every server has the well-known address, whatever it answers there.
void addServer(const std::string& origin, const std::string& path,
               std::vector<std::string>& starts) {
  if (!path.empty() && path != "/") {
    starts.push_back(origin + path);
    return;
  }
  starts.push_back(origin + "/.well-known/carddav");
  starts.push_back(origin + "/");
}

void addServices(const std::string& service, const std::string& scheme, const std::string& domain,
                 const Resolver& resolver, std::vector<std::string>& starts) {
  const auto records = resolver(service, domain);
  for (const auto& target : records.targets) {
    addServer(scheme + "://" + target.host + ":" + std::to_string(target.port), records.path,
              starts);
  }
}

[[noreturn]] void refuse(const std::string& url) {
  throw RemoteError(RemoteFailure::Usage,
                    url + " is no URL, no host, and no address with a domain.");
}

// A user of a URL, or of an address one with a password.
bool holdsLogin(const std::string& url) {
  const auto scheme = url.find("://");
  const auto from = scheme == std::string::npos ? 0 : scheme + 3;
  const auto server = url.substr(from, url.find_first_of("/?#", from) - from);
  const auto user = server.substr(0, server.rfind('@'));
  if (user.size() == server.size()) return false;
  return scheme != std::string::npos || user.find(':') != std::string::npos;
}

}  // namespace

LoginPlace loginPlace(const LoginSettings& settings, const Resolver& resolver) {
  const auto& url = settings.url;
  LoginPlace place;
  if (holdsLogin(url)) {
    throw RemoteError(RemoteFailure::Usage,
                      "User and password do not belong into a URL, which is kept and shown.");
  }
  if (url.empty() || url.find_first_of(" \t\r\n") != std::string::npos) refuse(url);
  const bool isUrl = url.find("://") != std::string::npos;
  const auto at = url.rfind('@');
  if (!isUrl && at != std::string::npos) {
    place.domain = lowerCase(url.substr(at + 1));
    if (place.domain.empty() || place.domain.find('/') != std::string::npos) refuse(url);
    addServices("_carddavs._tcp", "https", place.domain, resolver, place.starts);
    if (place.starts.empty() && settings.allowHttp) {
      addServices("_carddav._tcp", "http", place.domain, resolver, place.starts);
    }
    if (place.starts.empty()) addServer("https://" + place.domain, {}, place.starts);
    return place;
  }
  const auto parsed = parsedUrl(isUrl ? url : "https://" + url);
  place.domain = parsed.host;
  auto origin = askableUrl(parsed.text, "/");
  origin.pop_back();
  addServer(origin, parsed.path, place.starts);
  return place;
}

}  // namespace ox::sync
