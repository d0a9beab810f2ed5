#include "ox/sync/http/exchange.hpp"

#include <algorithm>
#include <utility>

#include "ox/base/clock.hpp"
#include "ox/sync/http/retry_after.hpp"

namespace ox::sync {
namespace {

using Trouble = Transfer::Trouble;

bool isRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool isPermanent(int status) {
  return status == 301 || status == 308;
}

bool isPassing(int status) {
  return status == 500 || status == 502 || status == 504;
}

bool isGood(int status) {
  return status >= 200 && status < 300;
}

}  // namespace

Exchange::Exchange(HttpSession& session, Wire& wire, HttpRequest request, const BodySink* sink)
    : session_(session),
      wire_(wire),
      request_(std::move(request)),
      sink_(sink),
      url_(parsedUrl(request_.url)) {
  session_.checkEncrypted(url_);
  transfer_ = wire_.takeTransfer(url_.origin());
}

Exchange::~Exchange() {
  wire_.giveBack(std::move(transfer_));
}

void Exchange::advance(Clock::time_point now) {
  if (hasEnded_) return;
  try {
    if (isUnderWay_ && transfer_->isDone()) {
      isUnderWay_ = false;
      judge();
    }
    if (!hasEnded_ && !isUnderWay_ && now >= due_) start();
  } catch (const RemoteError& error) {
    failure_ = std::make_exception_ptr(
        RemoteError(error.kind(), session_.withoutSecret(error.what()), error.notBefore()));
    hasEnded_ = true;
  } catch (...) {
    failure_ = std::current_exception();
    hasEnded_ = true;
  }
}

HttpAnswer Exchange::takeAnswer() {
  return std::move(answer_);
}

std::string Exchange::awaited() const {
  if (isPausing_) return url_.place() + ", which asks for a pause";
  return url_.place() + " to answer " + request_.method + " " + url_.path;
}

// The secret goes to accepted places alone, and not before it is known how it is wanted. A Digest
// cannot be computed without a challenge; libcurl would send an empty body to get one, so the
// request goes whole and without it instead.
Scheme Exchange::schemeToSend() const {
  if (!session_.hasSecret() || !session_.isAccepted(url_)) return Scheme::Unknown;
  if (session_.scheme == Scheme::Digest && transfer_->challengedBy != url_.origin()) {
    return Scheme::Unknown;
  }
  return session_.scheme;
}

void Exchange::start() {
  transfer_->prepare(session_, request_, url_, sink_, schemeToSend());
  isPausing_ = false;
  isUnderWay_ = true;
  started_ = Clock::now();
  wire_.start(*transfer_);
}

void Exchange::judge() {
  session_.requests += transfer_->requests();
  session_.bytes += transfer_->bytes();
  traceTry();
  if (transfer_->thrown()) std::rethrow_exception(transfer_->thrown());
  if (transfer_->trouble() != Trouble::None) {
    judgeTrouble();
  } else {
    judgeAnswer(transfer_->answer());
  }
}

void Exchange::traceTry() const {
  const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - started_);
  const bool isWhole = transfer_->trouble() == Trouble::None && !transfer_->thrown();
  session_.trace(request_.method + " " + url_.shown() + " " +
                 (isWhole ? std::to_string(transfer_->answer().status) : "broken") + " " +
                 std::to_string(time.count()) + " ms");
}

void Exchange::fail(RemoteFailure kind, const std::string& what) const {
  throw RemoteError(kind, what);
}

void Exchange::judgeTrouble() {
  const auto& reason = transfer_->reason();
  switch (transfer_->trouble()) {
    case Trouble::None:
      return;
    case Trouble::Untrusted:
      fail(RemoteFailure::Insecure,
           "the certificate of " + url_.place() + " cannot be trusted: " + reason);
    case Trouble::NoTls:
      fail(RemoteFailure::Insecure, url_.place() +
                                        " does not speak TLS; if it is meant to be asked " +
                                        "in the clear, its URL is http://" + url_.place());
    case Trouble::Unusable:
      fail(RemoteFailure::Usage, url_.place() + " cannot be asked: " + reason);
    case Trouble::NoRoute:
      if (tryAgain()) return;
      isOutcomeUnknown_ = !request_.onlyReads;
      fail(RemoteFailure::Unreachable, url_.place() + " cannot be reached: " + reason);
    case Trouble::Broken:
      if (tryAgain()) return;
      isOutcomeUnknown_ = !request_.onlyReads;
      fail(transfer_->isHeadRead() ? RemoteFailure::Protocol : RemoteFailure::Unreachable,
           transfer_->isHeadRead() ? "the answer of " + url_.place() + " broke off: " + reason
                                   : url_.place() + " gave no answer: " + reason);
    case Trouble::Nonsense:
      isOutcomeUnknown_ = !request_.onlyReads;
      fail(RemoteFailure::Protocol, url_.place() + " gave an unusable answer: " + reason);
  }
}

void Exchange::judgeAnswer(HttpAnswer& answer) {
  answer.body = session_.withoutSecret(std::move(answer.body));
  const auto* location = answer.header("location");
  if (answer.status == 401) return challenged(answer);
  if (answer.status == 429 || answer.status == 503) return pauseAsAsked(answer);
  session_.isProbed = true;
  if (isRedirect(answer.status) && location != nullptr) return redirect(answer, *location);
  if (!isPassing(answer.status) || !tryAgain()) end(answer);
}

void Exchange::end(HttpAnswer& answer) {
  if (redirects_ > 0 && isMoved_) answer.movedTo = url_.text;
  if (isGood(answer.status) && sink_ != nullptr && !transfer_->hasBegun() && sink_->begin) {
    sink_->begin(answer);
  }
  answer_ = std::move(answer);
  hasEnded_ = true;
}

// Once for each place. What was sent with an older challenge of Digest, or by a scheme that is not
// wanted any more, has not failed yet.
void Exchange::challenged(const HttpAnswer& answer) {
  const auto place = url_.place();
  transfer_->challengedBy.clear();
  if (!session_.hasSecret()) fail(RemoteFailure::Login, place + " wants a login (401)");
  if (!session_.isAccepted(url_)) {
    // The handle holds a challenge that is never to be answered.
    transfer_ = std::make_unique<Transfer>();
    fail(RemoteFailure::Login, place +
                                   " wants a login (401); the password was not sent there, since "
                                   "it belongs to another place: a login at " +
                                   url_.origin() + " would be one of its own");
  }
  const auto sent = transfer_->scheme();
  const auto wanted =
      session_.scheme == Scheme::Bearer ? Scheme::Bearer : schemeAskedFor(answer.headers);
  if (!wanted) {
    fail(RemoteFailure::Login, place + " offers no way to log in that is known here (401)");
  }
  const bool isRefused = sent == wanted && sent != Scheme::Digest;
  if (hasAnswered_ || isRefused) {
    fail(RemoteFailure::Login,
         place + " refused the login" +
             (session_.login.user.empty() ? "" : " of " + session_.login.user) + " (401)");
  }
  hasAnswered_ = true;
  session_.scheme = *wanted;
  if (wanted == Scheme::Digest) transfer_->challengedBy = url_.origin();
  dueIn(HttpLimits::Time(0));
}

void Exchange::redirect(const HttpAnswer& answer, const std::string& location) {
  if (++redirects_ > session_.limits.redirects) {
    fail(RemoteFailure::Protocol, url_.place() + " leads on and on: more than " +
                                      std::to_string(session_.limits.redirects) + " redirects");
  }
  auto target = session_.redirected(url_, location);
  isMoved_ = isMoved_ && isPermanent(answer.status);
  if (target.origin() != url_.origin()) hasAnswered_ = false;
  url_ = std::move(target);
  dueIn(HttpLimits::Time(0));
}

void Exchange::pauseAsAsked(const HttpAnswer& answer) {
  const auto now = millisecondsNow();
  const auto pause = askedPause(answer.header("retry-after"), answer.header("date"), now);
  const auto time = HttpLimits::Time(pause.value_or(std::chrono::seconds(0)));
  if (!pause || paused_ + time > session_.limits.longestPause) {
    throw RemoteError(RemoteFailure::TryLater,
                      url_.place() + " wants to be left alone (" + std::to_string(answer.status) +
                          ")" + (pause ? " for " + std::to_string(pause->count()) + " s" : ""),
                      pause ? now + time.count() : 0);
  }
  paused_ += time;
  isPausing_ = true;
  dueIn(session_.limits.second * pause->count());
  session_.notBefore = std::max(session_.notBefore, due_);
}

// False where it must not be tried again: it may change something, or was tried often enough.
bool Exchange::tryAgain() {
  const auto& pauses = session_.limits.pauses;
  if (!request_.onlyReads || tries_ >= pauses.size()) return false;
  dueIn(pauses.at(tries_++));
  return true;
}

void Exchange::dueIn(HttpLimits::Time pause) {
  due_ = Clock::now() + pause;
}

}  // namespace ox::sync
