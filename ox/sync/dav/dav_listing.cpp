// What a book holds: sync-collection (RFC 6578), or PROPFIND where a server has none.

#include <array>
#include <cstddef>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ox/base/text/ascii_case.hpp"
#include "ox/base/text/keyed_hash.hpp"
#include "ox/sync/dav/dav_book.hpp"
#include "ox/sync/dav/dav_marks.hpp"
#include "ox/sync/dav/wire/dav_href.hpp"
#include "ox/sync/dav/wire/dav_requests.hpp"
#include "ox/sync/dav/wire/multistatus_request.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

constexpr std::size_t kMostRounds = 10'000;

// What the answers of one listing have said of each card, in the order in which they came; a later
// word on a card replaces an earlier one.
class ListedCards {
 public:
  ListedCards(const DavBook& book, const std::string& url)
      : book_(book), url_(url), place_(bookKey(url)) {}

  bool isBookItself(const std::string& href) const {
    auto path = comparablePath(url_, href);
    while (path.size() > 1 && path.ends_with('/')) path.pop_back();
    return path == place_;
  }

  void put(const ListedCard& card) {
    if (auto* entry = entryOf(card.href)) {
      *entry = {card, false};
    } else if (!comparablePath(url_, card.href).starts_with(place_ + '/')) {
      ++others_;
    }
  }
  void remove(const std::string& href) {
    if (auto* entry = entryOf(href)) *entry = {{.href = href, .etag = {}, .bytes = 0}, true};
  }
  // Of places outside of the book, that is; what lies within it deeper down is nobody's business.
  bool speaksOfOthersOnly() const { return entries_.empty() && others_ > 0; }

  Listing listing(bool isWhole, std::string token) && {
    Listing listing{.isWhole = isWhole, .cards = {}, .gone = {}, .token = std::move(token)};
    for (auto& [card, isGone] : entries_) {
      if (!isGone) {
        listing.cards.push_back(std::move(card));
      } else if (!isWhole) {
        listing.gone.push_back(std::move(card.href));
      }
    }
    return listing;
  }

  void forget() {
    entries_.clear();
    places_.clear();
    others_ = 0;
  }

 private:
  struct Entry {
    ListedCard card;
    bool isGone = false;
  };

  Entry* entryOf(const std::string& href) {
    auto path = book_.pathOf(href);
    if (path.empty()) return nullptr;
    const auto [found, isNew] = places_.emplace(std::move(path), entries_.size());
    if (isNew) entries_.emplace_back();
    return &entries_[found->second];
  }

  const DavBook& book_;
  std::string url_;
  std::string place_;
  std::vector<Entry> entries_;
  std::unordered_map<std::string, std::size_t, KeyedHash> places_;
  std::size_t others_ = 0;
};

// One answer to sync-collection.
struct Round {
  HttpAnswer answer;
  std::string token;
  bool isCut = false;  // there is more, to be had with that token
};

struct Change {
  ListedCard card;
  bool isGone = false;
};

// A 404 counts whatever stands beside it. Any other status of its own says that the card is there:
// nobody may take it for gone.
std::optional<Change> changeOf(const DavResponse& response) {
  const bool isGone = response.status == 404 || response.status == 410;
  if (const auto* type = response.property(dav::kResourceType)) {
    if (type->has(dav::kCollection)) return std::nullopt;
  }
  return Change{{.href = response.href, .etag = etagIn(response), .bytes = 0}, isGone};
}

Round askForChanges(HttpClient& client, const std::string& url, const std::string& token,
                    ListedCards& cards) {
  Round round;
  std::vector<Change> changes;
  MultistatusBody body(
      [&] {
        changes.clear();
        round.isCut = false;
      },
      [&](const DavResponse& response) {
        if (cards.isBookItself(response.href)) {
          round.isCut = round.isCut || response.status == 507;
        } else if (auto change = changeOf(response)) {
          changes.push_back(std::move(*change));
        }
      });
  const auto sink = body.sink();
  round.answer = client.send(syncCollection(url, token), &sink);
  if (round.answer.status / 100 != 2) return round;
  body.finish(round.answer);
  round.token = body.syncToken();
  for (const auto& [card, isGone] : changes) {
    if (isGone) {
      cards.remove(card.href);
    } else {
      cards.put(card);
    }
  }
  return round;
}

// Every round until the server says that it was the last one. The answer's status is that of the
// last one; its token is what the listing ends with.
Round askForAllChanges(HttpClient& client, const std::string& url, std::string token,
                       ListedCards& cards) {
  for (std::size_t rounds = 0; rounds < kMostRounds; ++rounds) {
    auto round = askForChanges(client, url, token, cards);
    if (round.answer.status != 207 || !round.isCut) return round;
    if (round.token.empty() || round.token == token) {
      throw RemoteError(RemoteFailure::Protocol,
                        url + " says that there is more of its listing, and never gives it.");
    }
    token = round.token;
  }
  throw RemoteError(RemoteFailure::Protocol, url + " gives its listing in more than 10,000 parts.");
}

// Codes that a token that is not known any more has been seen to bring, and what a server without
// the report answers.
bool mayBeTheToken(int status) {
  return status == 400 || status == 403 || status == 409 || status == 410 || status == 412 ||
         status == 500;
}

bool lacksReport(int status) {
  return status == 403 || status == 405 || status == 415 || status == 501;
}

// Without a token a listing has failed for another reason; PROPFIND may do where it does not.
bool mayListOtherwise(int status) {
  return lacksReport(status) || mayBeTheToken(status) || status == 422 || status == 507;
}

void requireMembers(const std::string& url, const ListedCards& cards) {
  if (!cards.speaksOfOthersOnly()) return;
  throw RemoteError(RemoteFailure::Protocol,
                    url + " was listed, and the answer speaks of other places only.");
}

bool isCard(const DavResponse& response) {
  if (const auto* type = response.property(dav::kResourceType)) {
    if (type->has(dav::kCollection)) return false;
  }
  const auto* property = response.property(dav::kContentType);
  if (!property) return true;
  auto type = lowerCase(property->value().substr(0, property->value().find(';')));
  while (type.ends_with(' ')) type.pop_back();
  return type.empty() || type == "text/vcard" || type == "text/x-vcard" ||
         type == "text/directory" || lowerCase(response.href).ends_with(".vcf");
}

std::uint64_t bytesOf(const DavResponse& response) {
  const auto* property = response.property(dav::kContentLength);
  std::uint64_t bytes = 0;
  if (!property) return 0;
  for (const char c : property->value()) {
    if (c < '0' || c > '9' || bytes > (std::uint64_t{1} << 40)) return 0;
    bytes = bytes * 10 + static_cast<std::uint64_t>(c - '0');
  }
  return bytes;
}

}  // namespace

Listing DavBook::list(const std::string& token) {
  if (token.starts_with(kCtagMark)) {
    if (auto same = listIfCtagStays(token)) return std::move(*same);
    return listAllByPropfind();
  }
  if (abilities_.syncCollection.value_or(true)) {
    if (!token.empty()) {
      if (auto changes = listChanges(token)) return std::move(*changes);
    }
    if (auto all = listAllByReport()) {
      all->hasLostToken = !token.empty();
      return std::move(*all);
    }
  }
  auto all = listAllByPropfind();
  all.hasLostToken = !token.empty();
  return all;
}

// Nothing when the token is dead, in the middle of the rounds too, or the answer names no next one.
std::optional<Listing> DavBook::listChanges(const std::string& token) {
  ListedCards cards(*this, url_);
  auto round = askForAllChanges(client_, url_, token, cards);
  if (round.answer.status == 207) {
    requireMembers(url_, cards);
    if (round.token.empty()) return std::nullopt;
    abilities_.syncCollection = true;
    return std::move(cards).listing(false, std::move(round.token));
  }
  if (mayBeTheToken(round.answer.status)) return std::nullopt;
  throwBookFailure(round.answer);
}

// Nothing when the server has no such report, or gives no token with it: a listing without one is
// taken from PROPFIND.
std::optional<Listing> DavBook::listAllByReport() {
  ListedCards cards(*this, url_);
  auto round = askForAllChanges(client_, url_, {}, cards);
  if (round.answer.status == 207) {
    requireMembers(url_, cards);
    if (round.token.empty()) return std::nullopt;
    abilities_.syncCollection = true;
    return std::move(cards).listing(true, std::move(round.token));
  }
  if (!mayListOtherwise(round.answer.status)) throwBookFailure(round.answer);
  if (lacksReport(round.answer.status)) abilities_.syncCollection = false;
  return std::nullopt;
}

// What a server says of a book's state with its members is asked along with them.
Listing DavBook::listAllByPropfind() {
  static constexpr std::array kAsked = {dav::kEtag, dav::kContentType, dav::kContentLength,
                                        dav::kResourceType, dav::kCtag};
  ListedCards cards(*this, url_);
  std::string token;
  bool isThere = false;
  int itsStatus = 0;
  int strayStatus = 0;  // of what is no card: one server mangles the href of a missing book
  MultistatusBody body(
      [&] {
        cards.forget();
        token.clear();
        isThere = false;
        itsStatus = strayStatus = 0;
      },
      [&](const DavResponse& response) {
        if (cards.isBookItself(response.href)) {
          const auto* ctag = response.property(dav::kCtag);
          if (ctag && !ctag->value().empty()) token = std::string(kCtagMark).append(ctag->value());
          isThere = isThere || response.status / 100 <= 2;
          itsStatus = response.status;
        } else if (response.status == 404 || response.status == 410) {
          strayStatus = response.status;
        } else if (isCard(response)) {
          cards.put({.href = response.href, .etag = etagIn(response), .bytes = bytesOf(response)});
        }
      });
  const auto sink = body.sink();
  auto answer = client_.send(propfind(url_, Depth::Members, kAsked), &sink);
  if (answer.status / 100 != 2) throwBookFailure(answer);
  body.finish(answer);
  requireMembers(url_, cards);
  // What the book says of itself counts, whatever else is listed: 507 that this is not all.
  if (itsStatus >= 400) answer.status = itsStatus;
  if (answer.status >= 400) throwBookFailure(answer);
  auto listing = std::move(cards).listing(true, std::move(token));
  // An empty listing counts only where the book itself is in it.
  if (!isThere && listing.cards.empty()) {
    answer.status = strayStatus;
    if (strayStatus >= 400) throwBookFailure(answer);
    throw RemoteError(RemoteFailure::Protocol,
                      url_ + " was listed, and is not in its own listing.");
  }
  return listing;
}

std::optional<Listing> DavBook::listIfCtagStays(const std::string& token) {
  static constexpr std::array kAsked = {dav::kResourceType, dav::kCtag};
  const auto book = askItself(kAsked);
  if (token != std::string(kCtagMark) + book.ctag) return std::nullopt;
  return Listing{.isWhole = false, .cards = {}, .gone = {}, .token = token};
}

}  // namespace ox::sync
