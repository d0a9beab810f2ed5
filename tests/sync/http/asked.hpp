#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "ox/sync/http/http_client.hpp"
#include "ox/sync/remote/remote_error.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/sync/support/scripted_server.hpp"

// What the cases of the HTTP client ask with.

namespace ox::sync {

using support::listed;
using support::ScriptedAnswer;
using support::ScriptedRequest;
using support::ScriptedServer;
using Framing = support::ScriptedAnswer::Framing;

// No login, over http.
inline LoginSettings plainLogin(const ScriptedServer& server) {
  LoginSettings login;
  login.url = server.url();
  login.allowHttp = true;
  return login;
}

// Ann, with a password in a file.
inline LoginSettings annsLogin(const ScriptedServer& server,
                               const std::string& password = "wonder land") {
  auto login = plainLogin(server);
  const auto file = support::temporaryFile("password", password + "\n");
  std::filesystem::permissions(file, std::filesystem::perms::owner_read);
  login.user = "ann";
  login.password = {PasswordSource::Kind::File, file.string()};
  return login;
}

// Pauses that a test can wait for.
inline HttpLimits shortPauses() {
  HttpLimits limits;
  limits.pauses = {HttpLimits::Time(1), HttpLimits::Time(2)};
  limits.second = HttpLimits::Time(1);
  return limits;
}

// A read by default.
inline HttpRequest get(const std::string& url) {
  return {.method = "GET", .url = url, .headers = {}, .body = {}, .onlyReads = true};
}

inline HttpRequest put(const std::string& url, const std::string& body) {
  return {.method = "PUT",
          .url = url,
          .headers = {"Content-Type: text/vcard; charset=utf-8", "If-Match: \"1\""},
          .body = body};
}

inline std::string nameOf(RemoteFailure kind) {
  switch (kind) {
    case RemoteFailure::Usage:
      return "Usage";
    case RemoteFailure::Login:
      return "Login";
    case RemoteFailure::NoBook:
      return "NoBook";
    case RemoteFailure::Away:
      return "Away";
    case RemoteFailure::Unreachable:
      return "Unreachable";
    case RemoteFailure::Insecure:
      return "Insecure";
    case RemoteFailure::TryLater:
      return "TryLater";
    case RemoteFailure::Protocol:
      return "Protocol";
    case RemoteFailure::Stopped:
      return "Stopped";
    case RemoteFailure::Unencrypted:
      return "Unencrypted";
  }
  return "?";
}

// "Login: what it says"; "nothing" where nothing was thrown.
template <typename Work>
std::string failureOf(Work work) {
  try {
    work();
  } catch (const RemoteError& error) {
    return nameOf(error.kind()) + ": " + error.what();
  }
  return "nothing";
}

inline std::string place(const ScriptedServer& server) {
  return "127.0.0.1:" + std::to_string(server.port());
}

}  // namespace ox::sync
