#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ox/sync/http/http_client.hpp"
#include "ox/sync/http/http_session.hpp"
#include "ox/sync/http/url.hpp"

namespace ox::sync {

// One try of one request as it goes over the wire: a handle of libcurl. It is used for one try
// after the other, since what Digest counts lives in it.
class Transfer {
 public:
  using Clock = std::chrono::steady_clock;

  // Why there is no whole answer.
  enum class Trouble : std::uint8_t {
    None,
    Broken,     // the connection, or the body before its end
    NoRoute,    // no connection could be made: nothing was sent
    Untrusted,  // the certificate of the other side
    NoTls,      // whoever is there speaks something else, HTTP in the clear perhaps
    Unusable,   // a file of ours, or what libcurl cannot do
    Nonsense,   // what came is no HTTP, or too much of it
  };

  Transfer();
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;
  ~Transfer();

  // Request, sink and session are borrowed until it is done.
  void prepare(const HttpSession& session, const HttpRequest& request, const Url& url,
               const BodySink* sink, Scheme scheme);
  void* handle() const { return easy_; }

  // For the wire: how it ended.
  void finish(int code);
  // The time passed without anything; true when it is too long.
  bool isSilent(Clock::time_point now) const;
  void fallSilent();

  bool isDone() const { return isDone_; }
  Trouble trouble() const { return trouble_; }
  const std::string& reason() const { return reason_; }
  // What a sink threw.
  std::exception_ptr thrown() const { return thrown_; }
  HttpAnswer& answer() { return answer_; }
  bool isHeadRead() const { return isHeadRead_; }
  // The sink was told of the body.
  bool hasBegun() const { return hasBegun_; }
  // Those that libcurl sent again by itself are counted too.
  std::uint64_t requests() const { return std::max<std::uint64_t>(requests_, 1); }
  std::uint64_t bytes() const { return bytes_; }
  // The scheme that it was sent with.
  Scheme scheme() const { return scheme_; }

  // The origin whose Digest challenge the handle holds; empty: none.
  std::string challengedBy;

 private:
  struct Callbacks;

  void setRequest(const HttpRequest& request);
  void setSecret(const HttpSession& session, const Url& url);
  void setTls(const HttpSession& session, const Url& url);
  void addHeader(const std::string& line);
  void startHead(std::string_view line);
  bool takeHeader(std::string_view line);
  bool takeBody(std::string_view part);
  bool mayBeSent();
  bool fail(Trouble trouble, std::string reason);

  void* easy_;               // CURL*
  void* headers_ = nullptr;  // curl_slist*
  std::vector<char> error_;  // that libcurl writes to
  const HttpLimits* limits_ = nullptr;
  const BodySink* sink_ = nullptr;
  bool onlyReads_ = false;
  Scheme scheme_ = Scheme::Unknown;

  bool isDone_ = false;
  bool isHeadRead_ = false;
  bool hasBegun_ = false;
  bool isBodyStarted_ = false;
  bool isSendable_ = true;  // nothing was sent since the last head
  Trouble trouble_ = Trouble::None;
  std::string reason_;
  std::exception_ptr thrown_;
  HttpAnswer answer_;
  std::size_t headerLines_ = 0;
  std::size_t headerBytes_ = 0;
  std::size_t bodyBytes_ = 0;
  std::uint64_t requests_ = 0;
  std::uint64_t bytes_ = 0;
  std::int64_t moved_ = 0;  // bytes, as libcurl last told
  Clock::time_point lastMove_;
};

}  // namespace ox::sync
