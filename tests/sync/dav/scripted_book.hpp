#pragma once

#include <cstddef>
#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "ox/sync/dav/dav_book.hpp"
#include "ox/sync/http/http_client.hpp"
#include "ox/sync/remote/remote_error.hpp"
#include "tests/sync/support/dav_answers.hpp"
#include "tests/sync/support/scripted_server.hpp"

namespace ox::support {

// The book /b/ of a server that does as a script says.
class ScriptedBook {
 public:
  explicit ScriptedBook(ScriptedServer::Script script, sync::DavAbilities abilities = {})
      : client(login(server), {}, limits()), book(client, server.url("/b/"), abilities) {
    server.answer(std::move(script));
  }

  static sync::LoginSettings login(const ScriptedServer& server) {
    sync::LoginSettings settings;
    settings.url = server.url("/b/");
    settings.allowHttp = true;
    return settings;
  }
  static sync::HttpLimits limits() {
    sync::HttpLimits limits;
    limits.pauses = {sync::HttpLimits::Time(1), sync::HttpLimits::Time(1)};
    limits.second = sync::HttpLimits::Time(1);
    return limits;
  }
  // "REPORT /b/, PROPFIND /b/".
  std::string asked() const { return support::listed(server.requests()); }

  ScriptedServer server;
  sync::HttpClient client;
  sync::DavBook book;
};

// The failure of a step, as a number of its kind; -1 when there was none.
inline std::string failureOf(const std::function<void()>& step) {
  static constexpr const char* kNames[] = {"Usage",       "Login",      "NoBook",   "Away",
                                           "Unreachable", "Insecure",   "TryLater", "Protocol",
                                           "Stopped",     "Unencrypted"};
  try {
    step();
  } catch (const sync::RemoteError& error) {
    return kNames[static_cast<std::size_t>(error.kind())];
  }
  return "none";
}

}  // namespace ox::support
