#include "ox/sync/dav/discovery.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "ox/base/text/ascii_case.hpp"
#include "ox/sync/dav/login_place.hpp"
#include "ox/sync/dav/wire/dav_collection.hpp"
#include "ox/sync/dav/wire/dav_href.hpp"
#include "ox/sync/dav/wire/dav_requests.hpp"
#include "ox/sync/dav/wire/multistatus_request.hpp"
#include "ox/sync/http/url.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

constexpr std::array kLeading = {
    dav::kResourceType, dav::kPrincipal, dav::kHomes,   dav::kDisplayName,
    dav::kDescription,  dav::kOwner,     dav::kReports, dav::kPrivileges,
};

// A resource that was asked, and where it really is.
struct Resource {
  std::string url;      // that answered
  std::string lasting;  // to be kept: a redirect that does not say that it is for good is not
  DavResponse told;
};

std::string firstHref(const DavResponse& response, std::string_view name) {
  const auto* property = response.property(name);
  const auto hrefs = property ? property->hrefs() : std::vector<std::string>();
  return hrefs.empty() ? std::string() : hrefs.front();
}

std::string placeOf(const std::string& url) {
  auto path = comparablePath(url, url);
  if (path.ends_with('/')) path.pop_back();
  return path;
}

bool isBelow(const std::string& url, const std::string& home) {
  return hostOf(url) == hostOf(home) && placeOf(url).starts_with(placeOf(home) + '/');
}

class Discovery {
 public:
  Discovery(HttpClient& client, const LoginSettings& settings, const LoginPlace& place,
            std::string confirmedHost)
      : client_(client), settings_(settings), place_(place), confirmed_(std::move(confirmedHost)) {}

  Offer run();

 private:
  bool mayAsk(const std::string& url);
  std::optional<Resource> ask(const std::string& url);
  std::optional<Resource> askKnown(const std::string& url);
  bool follow(const Resource& resource);
  std::vector<std::string> homesOf(const Resource& resource);
  void takeHome(const std::string& home);
  void takeBook(const std::string& url, const DavResponse& told);
  [[noreturn]] void refuse() const;

  HttpClient& client_;
  const LoginSettings& settings_;
  const LoginPlace& place_;
  std::string confirmed_;
  Offer offer_;
  std::string why_;  // what was wrong with what was asked last
};

Offer Discovery::run() {
  for (const auto& start : place_.starts) {
    const auto resource = askKnown(start);
    const bool isFound = resource && follow(*resource);
    if (!offer_.foreignHost.empty()) {
      Offer foreign;
      foreign.foreignHost = offer_.foreignHost;
      foreign.scheme = client_.scheme();
      return foreign;
    }
    if (isFound) {
      offer_.scheme = client_.scheme();
      return std::move(offer_);
    }
  }
  refuse();
}

// False for a host that the user has to confirm first, which the offer then names.
bool Discovery::mayAsk(const std::string& url) {
  const auto at = parsedUrl(url);
  const bool isTheirs = at.host == place_.domain || at.host.ends_with('.' + place_.domain);
  if (!isTheirs && at.host != confirmed_) {
    offer_.foreignHost = at.host;
    return false;
  }
  if (at.scheme != "https" && !settings_.allowHttp) {
    throw RemoteError(RemoteFailure::Unencrypted,
                      at.shown() + " is not encrypted, and the login does not allow that");
  }
  client_.accept(url);
  return true;
}

// Nothing where there is nothing of WebDAV; why_ says what there is.
std::optional<Resource> Discovery::ask(const std::string& url) {
  if (!mayAsk(url)) return std::nullopt;
  Multistatus read;
  try {
    read = multistatusOf(client_, propfind(url, Depth::Itself, kLeading));
  } catch (const RemoteError& error) {
    if (error.kind() != RemoteFailure::Protocol) throw;
    why_ = error.what();
    return std::nullopt;
  }
  if (read.answer.status != 207) {
    why_ = sentenceOf(read.answer) + ".";
    return std::nullopt;
  }
  for (auto& response : read.responses) {
    if (response.status / 100 > 2) continue;
    if (placeOf(askableUrl(read.answer.url, response.href)) != placeOf(read.answer.url)) continue;
    const auto& answer = read.answer;
    const bool isElsewhereForNow = answer.url != url && answer.movedTo.empty();
    return Resource{.url = answer.url,
                    .lasting = isElsewhereForNow ? url : answer.url,
                    .told = std::move(response)};
  }
  why_ = url + " speaks WebDAV, and says that it is not there.";
  return std::nullopt;
}

// A server that lets anybody look may not have asked who we are, and so not say whose books there
// are: then it is told before it asks.
std::optional<Resource> Discovery::askKnown(const std::string& url) {
  auto resource = ask(url);
  if (!resource || !client_.scheme().empty()) return resource;
  if (settings_.password.kind == PasswordSource::Kind::None) return resource;
  const auto* principal = resource->told.property(dav::kPrincipal);
  if (!principal || !principal->has(dav::kUnauthenticated)) return resource;
  const bool isBearer = settings_.password.kind == PasswordSource::Kind::BearerCommand;
  client_.setScheme(isBearer ? "bearer" : "basic");
  return ask(url);
}

// True when it led to a book.
bool Discovery::follow(const Resource& resource) {
  why_.clear();
  const auto itself = collectionOf(resource.told);
  const auto principal = firstHref(resource.told, dav::kPrincipal);
  if (!principal.empty()) offer_.principal = askableUrl(resource.url, principal);
  if (itself.isAddressbook) {
    takeBook(resource.lasting, resource.told);
    return true;
  }
  offer_.homes = homesOf(resource);
  if (!offer_.foreignHost.empty()) return false;
  for (const auto& home : offer_.homes) takeHome(home);
  if (offer_.books.empty() && why_.empty()) {
    const bool isAccount = !offer_.principal.empty() && !offer_.homes.empty();
    why_ = resource.url + (isAccount ? " leads to an account without any address book."
                                     : " speaks WebDAV, but leads to no address book.");
  }
  return !offer_.books.empty();
}

// What is neither a book nor leads to a principal may be a home itself.
std::vector<std::string> Discovery::homesOf(const Resource& resource) {
  auto from = resource;
  if (!from.told.property(dav::kHomes) && !offer_.principal.empty()) {
    auto principal = ask(offer_.principal);
    if (!principal) return {};
    from = std::move(*principal);
  }
  const auto* property = from.told.property(dav::kHomes);
  std::vector<std::string> homes;
  if (property) {
    for (const auto& href : property->hrefs()) homes.push_back(askableUrl(from.url, href));
  } else if (offer_.principal.empty() && collectionOf(from.told).isCollection) {
    homes.push_back(from.url);
  }
  return homes;
}

void Discovery::takeHome(const std::string& home) {
  if (!mayAsk(home)) return;
  const auto read = multistatusOf(client_, propfind(home, Depth::Members, kCollectionProperties));
  if (read.answer.status != 207) {
    why_ = sentenceOf(read.answer) + ".";
    return;
  }
  for (const auto& response : read.responses) {
    if (!collectionOf(response).isAddressbook) continue;
    takeBook(askableUrl(read.answer.url, response.href), response);
  }
}

void Discovery::takeBook(const std::string& url, const DavResponse& told) {
  const auto book = collectionOf(told);
  const auto isKnown = [&](const OfferedBook& other) { return placeOf(other.url) == placeOf(url); };
  if (std::ranges::any_of(offer_.books, isKnown)) return;
  OfferedBook offered;
  offered.url = url.ends_with('/') ? url : url + '/';
  const auto place = placeOf(url);
  offered.name = book.name.empty() ? place.substr(place.rfind('/') + 1) : book.name;
  offered.description = book.description;
  offered.isReadOnly = book.isReadOnly;
  if (!book.owner.empty() && !offer_.principal.empty()) {
    offered.isOwn = placeOf(askableUrl(url, book.owner)) == placeOf(offer_.principal);
  } else {
    offered.isOwn =
        offer_.homes.empty() || std::ranges::any_of(offer_.homes, [&](const std::string& home) {
          return isBelow(url, home) || placeOf(url) == placeOf(home);
        });
  }
  offer_.books.push_back(std::move(offered));
}

void Discovery::refuse() const {
  throw RemoteError(RemoteFailure::NoBook, "There is no address book at " + settings_.url + ": " +
                                               (why_.empty() ? "nothing answers there." : why_));
}

}  // namespace

Offer discover(HttpClient& client, const LoginSettings& settings, const std::string& confirmedHost,
               const Resolver& resolver) {
  const auto place = loginPlace(settings, resolver);
  return Discovery(client, settings, place, lowerCase(confirmedHost)).run();
}

}  // namespace ox::sync
