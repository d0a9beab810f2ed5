#pragma once

#include <chrono>
#include <cstddef>
#include <exception>
#include <memory>
#include <string>

#include "ox/sync/http/http_client.hpp"
#include "ox/sync/http/http_session.hpp"
#include "ox/sync/http/transfer.hpp"
#include "ox/sync/http/url.hpp"
#include "ox/sync/http/wire.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

// One request with all the tries that it takes to its answer: challenges, redirects, pauses that
// the other side asks for, and what only reads is tried again.
class Exchange {
 public:
  using Clock = Transfer::Clock;

  // Session, wire and sink are borrowed. Throws RemoteError for a URL that may not be asked.
  Exchange(HttpSession& session, Wire& wire, HttpRequest request, const BodySink* sink);
  Exchange(const Exchange&) = delete;
  Exchange& operator=(const Exchange&) = delete;
  ~Exchange();

  // Starts the try that is due, and judges the one that is done.
  void advance(Clock::time_point now);
  // When the next try is due, while none is under way.
  Clock::time_point due() const { return isUnderWay_ ? Clock::time_point::max() : due_; }

  bool hasEnded() const { return hasEnded_; }
  // Of one that has ended: what was thrown; null where there is an answer.
  std::exception_ptr failure() const { return failure_; }
  // The failure is that of this request alone, and nobody knows what became of it.
  bool isOutcomeUnknown() const { return isOutcomeUnknown_; }
  // Nothing is lost by giving it up: it reads, or was sent away for now.
  bool mayBeLeft() const { return request_.onlyReads || isPausing_; }
  HttpAnswer takeAnswer();

  // What is being waited for, for people.
  std::string awaited() const;

 private:
  void start();
  void judge();
  void judgeTrouble();
  void judgeAnswer(HttpAnswer& answer);
  void challenged(const HttpAnswer& answer);
  void redirect(const HttpAnswer& answer, const std::string& location);
  void pauseAsAsked(const HttpAnswer& answer);
  bool tryAgain();
  void dueIn(HttpLimits::Time pause);
  Scheme schemeToSend() const;
  void end(HttpAnswer& answer);
  [[noreturn]] void fail(RemoteFailure kind, const std::string& what) const;
  void traceTry() const;

  HttpSession& session_;
  Wire& wire_;
  HttpRequest request_;
  const BodySink* sink_;
  std::unique_ptr<Transfer> transfer_;
  Url url_;

  bool isUnderWay_ = false;
  Clock::time_point due_;
  Clock::time_point started_;
  std::size_t tries_ = 0;  // again, of what only reads
  std::size_t redirects_ = 0;
  bool isMoved_ = true;       // by permanent redirects alone
  bool hasAnswered_ = false;  // a challenge of this place
  bool isPausing_ = false;
  HttpLimits::Time paused_{0};

  bool hasEnded_ = false;
  bool isOutcomeUnknown_ = false;
  HttpAnswer answer_;
  std::exception_ptr failure_;
};

}  // namespace ox::sync
