#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/http/http_client.hpp"
#include "ox/sync/login_settings.hpp"
#include "ox/sync/logins.hpp"
#include "ox/sync/remote/remote_book.hpp"

namespace ox::sync {

// A login as it is stored, and as hosts give it.
SyncLogin rowOfLogin(const std::string& name, const LoginSettings& settings);
LoginSettings settingsOfRow(const SyncLogin& row);

// The way to the books of one login, for one run: its connections and its secret. One thread at a
// time.
class RemoteLogin {
 public:
  RemoteLogin(const SyncLogin& row, const WireHooks& hooks);
  ~RemoteLogin();
  RemoteLogin(const RemoteLogin&) = delete;
  RemoteLogin& operator=(const RemoteLogin&) = delete;

  // Borrows the login.
  std::unique_ptr<RemoteBook> open(const SyncBook& book);
  // For the row of a book that was opened: what was learned of its server.
  std::string abilitiesOf(const RemoteBook& book) const;
  // Asks for all books at once which of them hold nothing new: their containers. None where that
  // cannot be told so. Throws RemoteError.
  std::vector<std::string> unchanged(const std::vector<SyncBook>& books);

  std::string scheme() const;
  std::uint64_t requests() const;
  std::uint64_t bytes() const;

 private:
  LoginSettings settings_;
  std::vector<std::string> homes_;
  WireHooks hooks_;
  std::unique_ptr<HttpClient> client_;  // null for a folder
};

}  // namespace ox::sync
