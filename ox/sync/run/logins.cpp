#include "ox/sync/logins.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/uuid.hpp"
#include "ox/platform/Contacts/CNContainer.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/sync/dav/discovery.hpp"
#include "ox/sync/folder/offer_of_folder.hpp"
#include "ox/sync/http/http_client.hpp"
#include "ox/sync/http/url.hpp"
#include "ox/sync/run/look/local_book.hpp"
#include "ox/sync/run/remote_login.hpp"
#include "ox/sync/run/run_rows.hpp"

namespace ox::sync {
namespace {

[[noreturn]] void refuse(const std::string& why) {
  throw RemoteError(RemoteFailure::Usage, why);
}

void requireFree(const std::string& container, const std::vector<SyncBook>& books) {
  const auto known = containerSource().containerNamed(container);
  if (!known) refuse("there is no account " + container);
  const bool isTaken = std::ranges::any_of(
      books, [&](const SyncBook& book) { return book.container == known->identifier; });
  if (isTaken) refuse(known->name + " is in step with another book already");
}

// Where discovery led, which the user has seen: the secret goes there in each run.
std::vector<std::string> originsOf(const Offer& offer, const std::vector<ChosenBook>& books) {
  std::vector<std::string> origins;
  const auto add = [&](const std::string& url) {
    auto origin = parsedUrl(url).origin();
    if (std::ranges::find(origins, origin) == origins.end()) origins.push_back(std::move(origin));
  };
  for (const auto& home : offer.homes) add(home);
  for (const auto& chosen : books) add(chosen.book.url);
  return origins;
}

// In one act with the login, which may be a new one.
std::vector<AddedBook> take(SyncLogin login, const std::vector<ChosenBook>& books) {
  const auto known = syncSource().syncBooks();
  SaveRequest request;
  std::vector<AddedBook> added;
  for (const auto& chosen : books) {
    AddedBook book{chosen.container, chosen.containerName};
    if (chosen.container.empty()) {
      book.container = uuidText(makeUuid()) + ":ABAccount";
      request.newContainers.push_back(
          {book.container, chosen.containerName, CNContainerTypeCardDAV});
    } else {
      requireFree(chosen.container, known);
      book.name = containerSource().containerNamed(chosen.container)->name;
    }
    using ReadOnly = SyncBook::ReadOnly;
    SyncRows::BookOfLogin of;
    of.login = login.name;
    of.book.container = book.container;
    of.book.url = chosen.book.url;
    of.book.name = chosen.book.name;
    of.book.readOnly = chosen.sendsNothing      ? ReadOnly::AsAsked
                       : chosen.book.isReadOnly ? ReadOnly::AsItSays
                                                : ReadOnly::No;
    if (chosen.categoriesAreGroups) of.book.groupSpelling = kCategoriesAsGroups;
    request.sync.books.push_back(std::move(of));
    added.push_back(std::move(book));
  }
  request.sync.logins.push_back(std::move(login));
  request.outlivesPowerCut = true;
  if (!containerSource().execute(request)) {
    throw StoreError(StoreError::Kind::Refused, request.reason, {});
  }
  return added;
}

}  // namespace

Offer offerOf(const LoginSettings& settings, const WireHooks& hooks,
              const std::string& confirmedHost) {
  if (settings.kind == LoginSettings::Kind::Folder) return offerOfFolder(settings.url);
  HttpClient client(settings, hooks);
  auto offer = discover(client, settings, confirmedHost);
  offer.scheme = client.scheme();
  return offer;
}

std::vector<AddedBook> addLogin(const std::string& name, const LoginSettings& settings,
                                const Offer& offer, const std::vector<ChosenBook>& books) {
  for (const auto& login : syncSource().syncLogins()) {
    if (login.name == name) refuse("there is a login " + name + " already");
  }
  auto row = rowOfLogin(name, settings);
  row.principal = offer.principal;
  row.homes = offer.homes;
  if (settings.kind == LoginSettings::Kind::CardDav) row.origins = originsOf(offer, books);
  row.scheme = offer.scheme;
  return take(std::move(row), books);
}

std::vector<AddedBook> addBooks(const std::string& login, const Offer& offer,
                                const std::vector<ChosenBook>& books) {
  for (auto& row : syncSource().syncLogins()) {
    if (row.name != login) continue;
    row.homes = offer.homes;
    if (settingsOfRow(row).kind == LoginSettings::Kind::CardDav) {
      for (auto& origin : originsOf(offer, books)) {
        if (std::ranges::find(row.origins, origin) == row.origins.end()) {
          row.origins.push_back(std::move(origin));
        }
      }
    }
    return take(std::move(row), books);
  }
  refuse("there is no login " + login);
}

std::vector<KnownBook> knownBooks() {
  const auto logins = syncSource().syncLogins();
  std::vector<KnownBook> books;
  for (const auto& row : syncSource().syncBooks()) {
    KnownBook book;
    book.container = row.container;
    const auto container = containerSource().containerNamed(row.container);
    book.account = container ? container->name : row.name;
    book.url = row.url;
    book.name = row.name;
    book.isReadOnly = row.isReadOnly();
    book.isAway = row.state == SyncBook::State::Away;
    const auto login = std::ranges::find(logins, row.login, &SyncLogin::id);
    if (login != logins.end()) book.login = login->name;
    book.lastSuccess = row.lastSuccess;
    book.lastError = lastFailureOf(row);
    const auto runs = syncSource().syncRuns(row.container, 1);
    if (!runs.empty()) book.lastRun = runs.front().end;
    books.push_back(std::move(book));
  }
  return books;
}

LoginSettings settingsOf(const std::string& login) {
  for (const auto& row : syncSource().syncLogins()) {
    if (row.name == login) return settingsOfRow(row);
  }
  refuse("there is no login " + login);
}

}  // namespace ox::sync
