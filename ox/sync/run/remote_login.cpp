#include "ox/sync/run/remote_login.hpp"

#include <array>
#include <utility>

#include "ox/sync/dav/dav_book.hpp"
#include "ox/sync/folder/folder_book.hpp"

namespace ox::sync {
namespace {

struct KindWord {
  LoginSettings::Kind kind;
  const char* word;
};
constexpr std::array kKinds = {KindWord{LoginSettings::Kind::CardDav, "carddav"},
                               KindWord{LoginSettings::Kind::Folder, "folder"}};

struct SourceWord {
  PasswordSource::Kind kind;
  const char* word;
};
constexpr std::array kSources = {
    SourceWord{PasswordSource::Kind::None, ""},
    SourceWord{PasswordSource::Kind::Command, "command"},
    SourceWord{PasswordSource::Kind::File, "file"},
    SourceWord{PasswordSource::Kind::Credential, "credential"},
    SourceWord{PasswordSource::Kind::BearerCommand, "bearer-command"},
};

template <typename Rows, typename Kind>
const char* wordOf(const Rows& rows, Kind kind) {
  for (const auto& row : rows) {
    if (row.kind == kind) return row.word;
  }
  return "";
}

template <typename Rows>
auto kindOfWord(const Rows& rows, const std::string& word) {
  for (const auto& row : rows) {
    if (row.word == word) return row.kind;
  }
  return rows.front().kind;
}

// How a book's row keeps what its server can do: a letter for each report that was tried.
constexpr const char* kWithSync = "S";
constexpr const char* kWithoutSync = "s";
constexpr const char* kWithMultiget = "M";
constexpr const char* kWithoutMultiget = "m";

std::optional<bool> ability(const std::string& reports, const char* with, const char* without) {
  if (reports.find(with) != std::string::npos) return true;
  if (reports.find(without) != std::string::npos) return false;
  return std::nullopt;
}

}  // namespace

SyncLogin rowOfLogin(const std::string& name, const LoginSettings& settings) {
  SyncLogin row;
  row.name = name;
  row.kind = wordOf(kKinds, settings.kind);
  row.url = settings.url;
  row.user = settings.user;
  row.passwordKind = wordOf(kSources, settings.password.kind);
  row.passwordSource = settings.password.text;
  row.clientCertificate = settings.clientCertificate;
  row.authorities = settings.authorities;
  row.allowHttp = settings.allowHttp;
  return row;
}

LoginSettings settingsOfRow(const SyncLogin& row) {
  LoginSettings settings;
  settings.kind = kindOfWord(kKinds, row.kind);
  settings.url = row.url;
  settings.user = row.user;
  settings.password = {kindOfWord(kSources, row.passwordKind), row.passwordSource};
  settings.clientCertificate = row.clientCertificate;
  settings.authorities = row.authorities;
  settings.allowHttp = row.allowHttp;
  return settings;
}

RemoteLogin::RemoteLogin(const SyncLogin& row, const WireHooks& hooks)
    : settings_(settingsOfRow(row)), homes_(row.homes), hooks_(hooks) {
  if (settings_.kind == LoginSettings::Kind::Folder) return;
  client_ = std::make_unique<HttpClient>(settings_, hooks_);
  if (!row.scheme.empty()) client_->setScheme(row.scheme);
  for (const auto& origin : row.origins) client_->accept(origin);
}

RemoteLogin::~RemoteLogin() = default;

std::unique_ptr<RemoteBook> RemoteLogin::open(const SyncBook& book) {
  if (!client_) return std::make_unique<FolderBook>(book.url, hooks_);
  DavAbilities abilities;
  abilities.syncCollection = ability(book.reports, kWithSync, kWithoutSync);
  abilities.multiget = ability(book.reports, kWithMultiget, kWithoutMultiget);
  return std::make_unique<DavBook>(*client_, book.url, abilities);
}

std::string RemoteLogin::abilitiesOf(const RemoteBook& book) const {
  const auto* dav = dynamic_cast<const DavBook*>(&book);
  if (dav == nullptr) return {};
  const auto& known = dav->abilities();
  std::string reports;
  if (known.syncCollection) reports += *known.syncCollection ? kWithSync : kWithoutSync;
  if (known.multiget) reports += *known.multiget ? kWithMultiget : kWithoutMultiget;
  return reports;
}

std::vector<std::string> RemoteLogin::unchanged(const std::vector<SyncBook>& books) {
  std::vector<std::string> containers;
  if (!client_ || books.size() < 2) return containers;
  for (const auto& home : homes_) {
    const auto states = bookStates(*client_, home);
    for (const auto& book : books) {
      const auto state = states.find(bookKey(book.url));
      if (state != states.end() && !book.token.empty() && state->second.isAsListed(book.token)) {
        containers.push_back(book.container);
      }
    }
  }
  return containers;
}

std::string RemoteLogin::scheme() const {
  return client_ ? client_->scheme() : std::string();
}

std::uint64_t RemoteLogin::requests() const {
  return client_ ? client_->requests() : 0;
}

std::uint64_t RemoteLogin::bytes() const {
  return client_ ? client_->bytes() : 0;
}

}  // namespace ox::sync
