#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ox/sync/login_settings.hpp"

namespace ox::sync {

struct HttpRequest {
  std::string method;
  std::string url;                   // absolute
  std::vector<std::string> headers;  // "Name: value", beside User-Agent and what the login needs
  std::string body;                  // sent again when it has to be: challenge, redirect
  // The ETag of the answer matters, so it must not be that of a compressed text.
  bool wantsIdentity = false;
  // Reading changes nothing there: broken connections and 500, 502, 504 are tried twice again.
  bool onlyReads = false;
};

struct HttpAnswer {
  int status = 0;   // of the end: challenges and redirects have been dealt with
  std::string url;  // that answered
  // The URL to ask from now on, where each redirect on the way was permanent; else empty.
  std::string movedTo;
  std::vector<std::pair<std::string, std::string>> headers;  // names in lower case
  // Whole, unless there was a sink and the status is 2xx: then it went there.
  std::string body;

  // Borrowed; null without it.
  const std::string* header(std::string_view lowerCaseName) const;
};

// Is given the body of a 2xx in parts as it comes. What it throws ends the request and reaches the
// caller. `begin` comes before the first part of each try, so that a body that broke off is
// forgotten.
struct BodySink {
  std::function<void(const HttpAnswer& head)> begin;
  std::function<void(std::string_view part)> take;
};

// Requests of one login, over connections that are kept. The secret is read before the first
// request and goes to the origins that were accepted alone: that of the login's URL, those that it
// led to by permanent redirect while `accept` allows, and nowhere else. Follows redirects itself
// (same method, headers and body; at most five; never from https to http). Throws RemoteError where
// no answer can be had, 401 stays, or 429 and 503 ask for longer than a minute. Any other status is
// an answer. Certificates are always verified. Silence is limited, not length; so are the bytes of
// a body. One thread at a time.
class HttpClient {
 public:
  HttpClient(LoginSettings login, WireHooks hooks);
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;
  ~HttpClient();

  HttpAnswer send(const HttpRequest& request, const BodySink* sink = nullptr);

  // Several, at most so many under way at once. The request is asked for when it is sent; what
  // became of it is told on this thread, once, in any order. Where no answer could be had for one
  // that does not only read, `failed` is told instead, and the others go on.
  struct Job {
    std::function<HttpRequest()> request;
    std::function<void(HttpAnswer)> done;
    std::function<void(const std::string& why)> failed;
    BodySink sink = {};  // empty functions: none
  };
  void sendAll(std::span<const Job> jobs, std::size_t most);

  // Another origin ("https://host:port") that the secret may go to, as discovery has found and the
  // user has confirmed it.
  void accept(std::string origin);

  // The scheme that the server asked for ("basic", "digest", "bearer"; empty before it is known),
  // for the next client of this login, which then asks nobody.
  std::string scheme() const;
  void setScheme(const std::string& scheme);

  std::uint64_t requests() const;  // that were sent, each try counted
  std::uint64_t bytes() const;     // of bodies, both ways

 private:
  class Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace ox::sync
