#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "ox/sync/http/challenge.hpp"
#include "ox/sync/http/http_client.hpp"
#include "ox/sync/http/secret.hpp"
#include "ox/sync/http/url.hpp"
#include "ox/sync/login_settings.hpp"

namespace ox::sync {

// What the requests of one client share: the login, what is known of it by now, and the counts.
class HttpSession {
 public:
  HttpSession(LoginSettings loginSettings, WireHooks wireHooks, HttpLimits httpLimits);

  // Reads the secret, once. Throws RemoteError.
  void open();
  bool hasSecret() const { return secret_ != nullptr; }
  const Secret& secret() const { return *secret_; }

  void accept(const std::string& url) { accepted_.insert(parsedUrl(url).origin()); }
  bool isAccepted(const Url& url) const { return accepted_.contains(url.origin()); }

  // Throws RemoteError (Unencrypted) for http that the login does not allow.
  void checkEncrypted(const Url& url) const;
  // Where a redirect leads. Throws RemoteError: Insecure from https to http and from elsewhere into
  // a private network, Protocol for what is no URL.
  Url redirected(const Url& from, const std::string& location) const;

  // What another side has said, for people and for the store: where it says back what it was sent,
  // dots stand instead of the secret. One that is shorter than six characters may be any word.
  std::string withoutSecret(std::string text) const;

  void checkStopped() const;
  void trace(const std::string& line) const;

  const LoginSettings login;
  const WireHooks hooks;
  const HttpLimits limits;

  Scheme scheme = Scheme::Unknown;
  bool isProbed = false;  // an answer has come: it is known whether a login is wanted
  std::chrono::steady_clock::time_point notBefore{};  // the other side asked for a pause
  std::uint64_t requests = 0;
  std::uint64_t bytes = 0;

 private:
  std::string ownHost_;
  std::set<std::string> accepted_;
  std::unique_ptr<const Secret> secret_;
};

}  // namespace ox::sync
