#include "ox/sync/dav/dav_book.hpp"

#include <utility>

#include "ox/sync/dav/dav_marks.hpp"
#include "ox/sync/dav/wire/dav_href.hpp"
#include "ox/sync/dav/wire/dav_requests.hpp"
#include "ox/sync/dav/wire/multistatus_request.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

std::string withSlash(std::string url) {
  if (!url.ends_with('/')) url += '/';
  return url;
}

std::string withoutSlash(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) path.pop_back();
  return path;
}

}  // namespace

DavBook::DavBook(HttpClient& client, std::string url, DavAbilities abilities)
    : client_(client),
      url_(withSlash(std::move(url))),
      path_(comparablePath(url_, url_)),
      abilities_(abilities) {}

// A member of the book itself: what lies deeper belongs to another collection.
std::string DavBook::pathOf(std::string_view href) const {
  auto path = comparablePath(url_, std::string(href));
  if (!path.starts_with(path_) || path.size() == path_.size()) return {};
  if (path.find('/', path_.size()) != std::string::npos) return {};
  return path;
}

std::string DavBook::hrefFor(std::string_view fileName) const {
  return askablePath(url_, url_) + std::string(fileName) + ".vcf";
}

BookFacts DavBook::facts() {
  const auto book = askItself(kCollectionProperties);
  if (!book.isAddressbook) {
    throw RemoteError(RemoteFailure::NoBook, url_ + " is there, but it is no address book.");
  }
  if (book.tellsReports) {
    abilities_.syncCollection = book.hasSyncCollection;
    abilities_.multiget = book.hasMultiget;
  }
  return {.name = book.name,
          .isReadOnly = book.isReadOnly,
          .mostBytes = book.mostBytes,
          .wantsVersion4 = book.wantsVersion4};
}

DavCollection DavBook::askItself(std::span<const std::string_view> properties) {
  const auto read = multistatusOf(client_, propfind(url_, Depth::Itself, properties));
  if (read.answer.status != 207) throwBookFailure(read.answer);
  for (const auto& response : read.responses) {
    const bool isBook = withoutSlash(comparablePath(url_, response.href)) == withoutSlash(path_);
    if (isBook && response.status / 100 <= 2) return collectionOf(response);
  }
  // One server says 404 within a 207, of an href that it has mangled.
  if (read.responses.size() == 1 && read.responses.front().status / 100 == 4) {
    auto answer = read.answer;
    answer.status = read.responses.front().status;
    throwBookFailure(answer);
  }
  throw RemoteError(RemoteFailure::Protocol, url_ + " was asked, and the answer speaks of others.");
}

void throwBookFailure(const HttpAnswer& answer) {
  const auto sentence = sentenceOf(answer) + ".";
  switch (answer.status) {
    case 403:
    case 404:
    case 410:
      throw RemoteError(RemoteFailure::Away, sentence);
    case 502:
    case 504:
      throw RemoteError(RemoteFailure::Unreachable, sentence);
    default:
      throw RemoteError(RemoteFailure::Protocol, sentence);
  }
}

bool BookState::isAsListed(const std::string& listingToken) const {
  if (listingToken.empty()) return false;
  if (listingToken == token) return true;
  return !ctag.empty() && listingToken == std::string(kCtagMark) + ctag;
}

std::map<std::string, BookState> bookStates(HttpClient& client, const std::string& home) {
  static constexpr std::array kAsked = {dav::kResourceType, dav::kSyncToken, dav::kCtag};
  const auto read = multistatusOf(client, propfind(home, Depth::Members, kAsked));
  if (read.answer.status != 207) throwBookFailure(read.answer);
  std::map<std::string, BookState> states;
  for (const auto& response : read.responses) {
    const auto book = collectionOf(response);
    const auto path = comparablePath(home, response.href);
    if (!book.isAddressbook || path.empty()) continue;
    states[withoutSlash(path)] = {.token = book.token, .ctag = book.ctag};
  }
  return states;
}

std::string bookKey(const std::string& bookUrl) {
  return withoutSlash(comparablePath(bookUrl, bookUrl));
}

}  // namespace ox::sync
