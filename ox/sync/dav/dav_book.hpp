#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "ox/sync/dav/wire/dav_collection.hpp"
#include "ox/sync/http/http_client.hpp"
#include "ox/sync/remote/remote_book.hpp"

namespace ox::sync {

// What is known of a book's server, and is worth keeping between runs. What is not known is tried.
struct DavAbilities {
  std::optional<bool> syncCollection;
  std::optional<bool> multiget;

  bool operator==(const DavAbilities&) const = default;
};

// An address book of a CardDAV server (RFC 6352).
//
// Beside a server's own marks, which are opaque, it gives out two of its own. A listing without
// sync-collection has the token "x-ctag:" and the book's ctag, where the server has one. A card for
// which the server gives no ETag has "x-text:" and a hash of its text; a push then reads and
// compares first.
class DavBook : public RemoteBook {
 public:
  // The client is borrowed. The URL is that of the collection, as discovery gave it.
  DavBook(HttpClient& client, std::string url, DavAbilities abilities = {});

  BookFacts facts() override;
  Listing list(const std::string& token) override;
  void fetch(std::span<const ListedCard> cards,
             const std::function<void(FetchedCard)>& sink) override;
  std::string pathOf(std::string_view href) const override;
  std::string hrefFor(std::string_view fileName) const override;
  void push(std::span<const Push> pushes,
            const std::function<void(std::size_t, Pushed)>& sink) override;

  // What has been learned by now.
  const DavAbilities& abilities() const { return abilities_; }

 private:
  // dav_listing.cpp
  std::optional<Listing> listChanges(const std::string& token);
  std::optional<Listing> listAllByReport();
  Listing listAllByPropfind();
  std::optional<Listing> listIfCtagStays(const std::string& token);
  // Asks the book alone; Away when it is not there.
  DavCollection askItself(std::span<const std::string_view> properties);

  HttpClient& client_;
  std::string url_;   // with a slash at its end
  std::string path_;  // of it, comparable
  DavAbilities abilities_;
};

// What a book's token or ctag was when its home was asked.
struct BookState {
  std::string token;
  std::string ctag;

  // True when a listing with that token would bring nothing new.
  bool isAsListed(const std::string& listingToken) const;
};

// What a book is found by, however its URL is spelled: its path.
std::string bookKey(const std::string& bookUrl);
// Of every book in a home, under its key, by one request. Throws RemoteError.
std::map<std::string, BookState> bookStates(HttpClient& client, const std::string& home);

// Throws the RemoteError that a request about a whole book ends with when it was answered so.
[[noreturn]] void throwBookFailure(const HttpAnswer& answer);

}  // namespace ox::sync
