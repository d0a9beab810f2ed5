#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/sync/login_settings.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

// A book that a login leads to.
struct OfferedBook {
  std::string url;
  std::string name;
  std::string description;
  bool isReadOnly = false;
  bool isOwn = true;  // of this user; others are taken only when they are named
};

struct Offer {
  std::vector<OfferedBook> books;
  std::string principal;
  std::vector<std::string> homes;
  std::string scheme;  // of authentication
  // Where a name from DNS led to another domain, that host: the user has to confirm it, since the
  // secret would go there. The books are not known before; see `confirmedHost`.
  std::string foreignHost;
};

// Goes to the place and tells what is there. Throws RemoteError: what is no address book, and leads
// to none, is NoBook. Keeps nothing. The host is one that the user has confirmed.
OX_EXPORT Offer offerOf(const LoginSettings& settings, const WireHooks& hooks,
                        const std::string& confirmedHost = {});

// A book to be taken: into a container that is there (its identifier), or into a new one.
struct ChosenBook {
  OfferedBook book;
  std::string container;      // identifier; empty: a new one
  std::string containerName;  // of a new one
  bool sendsNothing = false;  // whatever the book says of itself, it is read-only
  // A category of its persons is a group here, instead of a tag.
  bool categoriesAreGroups = false;
};

struct AddedBook {
  std::string container;  // identifier
  std::string name;
};

// Keeps the login under that name, which must be free, and makes a container of each book, in one
// act. Nothing is synchronised yet. Throws RemoteError (Usage) for a name that is taken, a
// container that is in step with another book, or the local one; StoreError.
OX_EXPORT std::vector<AddedBook> addLogin(const std::string& name, const LoginSettings& settings,
                                          const Offer& offer, const std::vector<ChosenBook>& books);

// Takes more books of a login that is there, with its way to the password. Likewise; throws
// RemoteError (Usage) where nobody has that login.
OX_EXPORT std::vector<AddedBook> addBooks(const std::string& login, const Offer& offer,
                                          const std::vector<ChosenBook>& books);

struct KnownBook {
  std::string container;  // identifier
  std::string account;    // name of the container
  std::string login;      // name
  std::string url;
  std::string name;  // there
  bool isReadOnly = false;
  bool isAway = false;
  std::int64_t lastSuccess = 0;  // to the hour, milliseconds since 1970; 0: never
  std::string lastError;         // empty: the last run went well
  std::int64_t lastRun = 0;      // that did something or failed, milliseconds since 1970; 0: none
};

// Every container that is in step with something, in the order in which they were added. Throws
// StoreError.
OX_EXPORT std::vector<KnownBook> knownBooks();
// Of that login; throws RemoteError (Usage) for a name that nobody has.
OX_EXPORT LoginSettings settingsOf(const std::string& login);

}  // namespace ox::sync
