// Changes of cards: PUT and DELETE, each under a condition.

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "ox/sync/dav/dav_book.hpp"
#include "ox/sync/dav/dav_get.hpp"
#include "ox/sync/dav/dav_marks.hpp"
#include "ox/sync/dav/dav_outcome.hpp"
#include "ox/sync/dav/wire/dav_href.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

namespace {

constexpr std::size_t kAtOnce = 4;

// The header under which a change is made; the places in the list of the pushes are kept.
struct Sending {
  std::size_t at = 0;
  std::string condition;  // empty: the card has neither ETag nor date, and was compared instead
};

// A weak ETag matches nothing (RFC 7232, section 3.1), and a mark of ours means nothing there.
bool needsLook(const Push& push) {
  return push.kind != Push::Kind::Create && (isWeak(push.etag) || push.etag.starts_with(kTextMark));
}

// What is still the card that the push speaks of is changed under what the look has brought.
std::string conditionAfterLook(const HttpAnswer& answer) {
  if (const auto* etag = answer.header("etag"); etag && !etag->empty()) {
    return "If-Match: " + std::string(opaqueTag(*etag));
  }
  if (const auto* date = answer.header("last-modified"); date && !date->empty()) {
    return "If-Unmodified-Since: " + *date;
  }
  return {};
}

// A weak tag may stay the same while the text does not.
bool isStill(const Push& push, const FetchedCard& card) {
  if (push.etag.starts_with(kTextMark)) return textMark(card.text) == push.etag;
  return opaqueTag(card.etag) == opaqueTag(push.etag) && push.isOf(card.text);
}

HttpRequest requestOf(const Push& push, const std::string& bookUrl, const std::string& condition) {
  HttpRequest request;
  request.url = askableUrl(bookUrl, push.href);
  if (!condition.empty()) request.headers.push_back(condition);
  if (push.kind == Push::Kind::Remove) {
    request.method = "DELETE";
    return request;
  }
  request.method = "PUT";
  request.headers.emplace_back("Content-Type: text/vcard; charset=utf-8");
  request.body = push.text();
  return request;
}

// Where there is no book any more, a card of it is answered so (RFC 4918, section 9.7.1).
bool mayLackBook(const Pushed& pushed) {
  return pushed.code == 404 || pushed.code == 410 ||
         (pushed.code == 409 && pushed.outcome == Pushed::Outcome::Refused);
}

// The pushes of one call: which ones may be sent, and under which condition.
class Pushing {
 public:
  using Sink = std::function<void(std::size_t, Pushed)>;

  Pushing(HttpClient& client, const DavBook& book, const std::string& url,
          std::span<const Push> pushes, const Sink& sink)
      : client_(client), book_(book), url_(url), pushes_(pushes), sink_(sink) {}

  void look();
  void send();
  bool mayBookBeAway() const { return mayBookBeAway_; }

 private:
  void tell(std::size_t at, Pushed::Outcome outcome, std::string reason) {
    sink_(at, {.outcome = outcome,
               .href = pushes_[at].href,
               .etag = {},
               .code = 0,
               .reason = std::move(reason)});
  }
  HttpClient::Job lookAt(std::size_t at);
  void takeLook(std::size_t at, const HttpAnswer& answer);
  void takeAnswer(std::size_t at, const HttpAnswer& answer);

  HttpClient& client_;
  const DavBook& book_;
  const std::string& url_;
  std::span<const Push> pushes_;
  const Sink& sink_;
  std::vector<Sending> sendings_;
  bool mayBookBeAway_ = false;
};

// Never without a condition, and never under one that holds for any card.
void Pushing::look() {
  std::vector<HttpClient::Job> looks;
  for (std::size_t at = 0; at < pushes_.size(); ++at) {
    const auto& push = pushes_[at];
    if (book_.pathOf(push.href).empty()) {
      tell(at, Pushed::Outcome::Refused, "Its place does not lie in the book.");
    } else if (push.kind == Push::Kind::Create) {
      sendings_.push_back({at, "If-None-Match: *"});
    } else if (push.etag.empty()) {
      tell(at, Pushed::Outcome::Changed, "Nobody knows what it was there.");
    } else if (needsLook(push)) {
      looks.push_back(lookAt(at));
    } else {
      sendings_.push_back({at, "If-Match: " + push.etag});
    }
  }
  if (!looks.empty()) client_.sendAll(looks, kAtOnce);
}

HttpClient::Job Pushing::lookAt(std::size_t at) {
  return cardGet(
      askableUrl(url_, pushes_[at].href),
      [this, at](const HttpAnswer& answer) { takeLook(at, answer); },
      [this, at](const std::string& why) { tell(at, Pushed::Outcome::Unknown, why); });
}

void Pushing::takeLook(std::size_t at, const HttpAnswer& answer) {
  const auto card = cardOf(answer, pushes_[at].etag);
  if (card.state == FetchedCard::State::Gone) {
    mayBookBeAway_ = true;
    tell(at, Pushed::Outcome::Gone, "It is not there any more.");
  } else if (card.state == FetchedCard::State::Unreadable) {
    tell(at, Pushed::Outcome::Unknown, card.reason);
  } else if (isStill(pushes_[at], card)) {
    sendings_.push_back({at, conditionAfterLook(answer)});
  } else {
    tell(at, Pushed::Outcome::Changed, "It was changed there.");
  }
}

void Pushing::send() {
  std::vector<HttpClient::Job> jobs;
  for (const auto& sending : sendings_) {
    const auto at = sending.at;
    HttpClient::Job job;
    job.request = [this, &sending] {
      return requestOf(pushes_[sending.at], url_, sending.condition);
    };
    job.done = [this, at](const HttpAnswer& answer) { takeAnswer(at, answer); };
    job.failed = [this, at](const std::string& why) { tell(at, Pushed::Outcome::Unknown, why); };
    jobs.push_back(std::move(job));
  }
  if (!jobs.empty()) client_.sendAll(jobs, kAtOnce);
}

// Where the server says it has put the card counts only within the book.
void Pushing::takeAnswer(std::size_t at, const HttpAnswer& answer) {
  auto pushed = pushedOf(pushes_[at].kind, pushes_[at].href, answer);
  pushed.href =
      book_.pathOf(pushed.href).empty() ? pushes_[at].href : askablePath(url_, pushed.href);
  mayBookBeAway_ = mayBookBeAway_ || mayLackBook(pushed);
  sink_(at, std::move(pushed));
}

}  // namespace

void DavBook::push(std::span<const Push> pushes,
                   const std::function<void(std::size_t, Pushed)>& sink) {
  Pushing pushing(client_, *this, url_, pushes, sink);
  pushing.look();
  pushing.send();
  // A whole book that is away says the same of each card.
  if (pushing.mayBookBeAway()) askItself(kWhetherThere);
}

}  // namespace ox::sync
