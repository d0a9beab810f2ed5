#pragma once

#include <array>
#include <chrono>
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
  std::string url;                   // absolute, of https; of http where the login allows it
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
// forgotten; it comes for an empty body too. Neither may use the client.
struct BodySink {
  std::function<void(const HttpAnswer& head)> begin;
  std::function<void(std::string_view part)> take;
};

// How long is waited and how much is taken. Tests take less.
struct HttpLimits {
  using Time = std::chrono::milliseconds;

  Time connecting{10'000};
  // Nothing comes and nothing goes: servers compute a first answer for minutes.
  Time silence{300'000};
  std::array<Time, 2> pauses = {Time(1'000), Time(4'000)};  // before what only reads is tried again
  Time longestPause{60'000};  // that a server may ask for in all until one request is answered
  Time second{1'000};         // what a second of such a pause lasts
  Time firstWord{5'000};      // when it is told what is waited for, at first and then each time
  Time nextWord{10'000};

  std::size_t keptBody = std::size_t{4} << 20U;    // bytes, decompressed
  std::size_t sunkBody = std::size_t{256} << 20U;  // the same where there is a sink
  std::size_t headers = 256;                       // lines
  std::size_t headerBytes = std::size_t{256} << 10U;
  std::size_t redirects = 5;
};

// Requests of one login, over connections that are kept. The secret is read before the first
// request and goes to accepted origins alone: that of the login's URL, and what was given to
// `accept`. Redirects are followed by the client itself, with the same method, headers and body: at
// most five, never from https to http, never from elsewhere into a private network. One to an
// origin that is not accepted is followed without the secret.
//
// Throws RemoteError where no answer can be had: Login where 401 stays or the secret cannot be had,
// TryLater where 429 and 503 ask for longer than a minute or say nothing, Insecure for a
// certificate that does not fit, Unencrypted for http that is not allowed, Unreachable, Protocol
// for an answer that is cut short or too large, Stopped. Any other status is an answer.
// Certificates are always verified. Silence is limited, not length. One thread at a time.
class HttpClient {
 public:
  // Throws RemoteError (Usage) where the URL of the login looks like one and is none. A login whose
  // URL is a host or user@domain accepts https on that host.
  HttpClient(LoginSettings login, WireHooks hooks, HttpLimits limits = {});
  HttpClient(const HttpClient&) = delete;
  HttpClient& operator=(const HttpClient&) = delete;
  ~HttpClient();

  HttpAnswer send(const HttpRequest& request, const BodySink* sink = nullptr);

  // Several, at most so many under way at once. The request is asked for when it is sent; what
  // became of it is told on this thread, once, in any order. Where no answer could be had for one
  // that does not only read, `failed` is told instead (it may have been done or not), and the
  // others go on, unless nothing is answered any more: after twice as many failures in a row, or
  // with any other error, no more are sent, what became of those under way is told, and the error
  // is thrown.
  struct Job {
    std::function<HttpRequest()> request;
    std::function<void(HttpAnswer)> done;
    std::function<void(const std::string& why)> failed;
    BodySink sink = {};  // empty functions: none
  };
  void sendAll(std::span<const Job> jobs, std::size_t most);

  // Another origin ("https://host:port", or any URL there) that the secret may go to, as discovery
  // has found and the user has confirmed it. Throws RemoteError (Usage) for what is no URL.
  void accept(const std::string& origin);

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
