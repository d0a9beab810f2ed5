#include "ox/sync/http/http_client.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <utility>

#include "ox/sync/http/exchange.hpp"
#include "ox/sync/http/http_session.hpp"
#include "ox/sync/http/wire.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {
namespace {

using Clock = Exchange::Clock;

// The longest time that nobody looks whether the host wants to stop.
constexpr std::chrono::milliseconds kTurn(100);

std::string wordsOf(const std::exception_ptr& failure) {
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception& error) {
    return error.what();
  }
}

}  // namespace

class HttpClient::Parts {
 public:
  Parts(LoginSettings login, WireHooks hooks, HttpLimits limits)
      : session(std::move(login), std::move(hooks), limits) {}

  HttpAnswer run(const HttpRequest& request, const BodySink* sink) {
    const auto exchange = begin(request, sink);
    const std::array<Exchange*, 1> exchanges = {exchange.get()};
    startWait();
    while (!exchange->hasEnded()) turn(exchanges);
    if (exchange->failure()) std::rethrow_exception(exchange->failure());
    return exchange->takeAnswer();
  }

  void runAll(std::span<const Job> jobs, std::size_t most);

  HttpSession session;

 private:
  struct Running {
    const Job* job = nullptr;
    std::unique_ptr<Exchange> exchange;
  };

  std::size_t mostNow(std::size_t most) const;
  static std::vector<Exchange*> exchangesOf(const std::vector<Running>& running);
  static Running takeOver(std::vector<Running>& running);

  // One step of all that is under way.
  void turn(std::span<Exchange* const> exchanges) {
    session.checkStopped();
    auto next = Clock::now() + kTurn;
    bool isAnyOver = false;
    for (auto* exchange : exchanges) {
      exchange->advance(Clock::now());
      isAnyOver = isAnyOver || exchange->hasEnded();
      next = std::min(next, exchange->due());
    }
    if (isAnyOver) return;
    tellWait(exchanges);
    wire_.turn(std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()));
  }

  void startWait() {
    waitingSince_ = Clock::now();
    nextWord_ = waitingSince_ + session.limits.firstWord;
  }

  std::unique_ptr<Exchange> begin(HttpRequest request, const BodySink* sink) {
    const bool hasSink = sink != nullptr && (sink->begin || sink->take);
    return std::make_unique<Exchange>(session, wire_, std::move(request), hasSink ? sink : nullptr);
  }

  void tellWait(std::span<Exchange* const> exchanges) {
    const auto now = Clock::now();
    if (now < nextWord_ || exchanges.empty()) return;
    nextWord_ = now + session.limits.nextWord;
    const auto time = std::chrono::duration_cast<std::chrono::seconds>(now - waitingSince_);
    if (!session.hooks.waiting) return;
    session.hooks.waiting(exchanges.front()->awaited() + " (" + std::to_string(time.count()) +
                          " s)");
  }

  Wire wire_;
  Clock::time_point waitingSince_;
  Clock::time_point nextWord_;
};

void HttpClient::Parts::runAll(std::span<const Job> jobs, std::size_t most) {
  most = std::max<std::size_t>(most, 1);
  std::vector<Running> running;
  std::exception_ptr failure;
  std::size_t next = 0;
  std::size_t failuresInARow = 0;
  startWait();
  while (true) {
    while (!failure && next < jobs.size() && running.size() < mostNow(most)) {
      const auto& job = jobs[next++];
      running.push_back({&job, begin(job.request(), &job.sink)});
    }
    if (failure) {
      std::erase_if(running, [](const auto& each) { return each.exchange->mayBeLeft(); });
    }
    if (running.empty() && (failure || next == jobs.size())) break;
    turn(exchangesOf(running));
    for (auto over = takeOver(running); over.exchange; over = takeOver(running)) {
      startWait();
      const auto why = over.exchange->failure();
      if (!why) {
        failuresInARow = 0;
        if (over.job->done) over.job->done(over.exchange->takeAnswer());
        continue;
      }
      const bool isOfOne = over.exchange->isOutcomeUnknown();
      if (!failure && (!isOfOne || ++failuresInARow >= 2 * most)) failure = why;
      if (isOfOne && over.job->failed) over.job->failed(wordsOf(why));
    }
  }
  if (failure) std::rethrow_exception(failure);
}

// One alone finds out how the login is wanted, so that not each of many is refused first.
std::size_t HttpClient::Parts::mostNow(std::size_t most) const {
  if (Clock::now() < session.notBefore) return 0;
  const bool isKnown =
      !session.hasSecret() || session.isProbed || session.scheme != Scheme::Unknown;
  return isKnown ? most : 1;
}

std::vector<Exchange*> HttpClient::Parts::exchangesOf(const std::vector<Running>& running) {
  std::vector<Exchange*> exchanges;
  exchanges.reserve(running.size());
  for (const auto& each : running) exchanges.push_back(each.exchange.get());
  return exchanges;
}

// One that has ended; without an exchange when there is none.
HttpClient::Parts::Running HttpClient::Parts::takeOver(std::vector<Running>& running) {
  const auto found = std::find_if(running.begin(), running.end(),
                                  [](const Running& each) { return each.exchange->hasEnded(); });
  if (found == running.end()) return {};
  auto over = std::move(*found);
  running.erase(found);
  return over;
}

const std::string* HttpAnswer::header(std::string_view lowerCaseName) const {
  const auto found = std::find_if(headers.begin(), headers.end(), [&](const auto& header) {
    return header.first == lowerCaseName;
  });
  return found == headers.end() ? nullptr : &found->second;
}

HttpClient::HttpClient(LoginSettings login, WireHooks hooks, HttpLimits limits)
    : parts_(std::make_unique<Parts>(std::move(login), std::move(hooks), limits)) {}

HttpClient::~HttpClient() = default;

HttpAnswer HttpClient::send(const HttpRequest& request, const BodySink* sink) {
  parts_->session.checkStopped();
  parts_->session.open();
  return parts_->run(request, sink);
}

void HttpClient::sendAll(std::span<const Job> jobs, std::size_t most) {
  parts_->session.checkStopped();
  if (jobs.empty()) return;
  parts_->session.open();
  parts_->runAll(jobs, most);
}

void HttpClient::accept(const std::string& origin) {
  parts_->session.accept(origin);
}

std::string HttpClient::scheme() const {
  return nameOf(parts_->session.scheme);
}

void HttpClient::setScheme(const std::string& scheme) {
  if (parts_->session.scheme != Scheme::Bearer) parts_->session.scheme = schemeNamed(scheme);
}

std::uint64_t HttpClient::requests() const {
  return parts_->session.requests;
}

std::uint64_t HttpClient::bytes() const {
  return parts_->session.bytes;
}

}  // namespace ox::sync
