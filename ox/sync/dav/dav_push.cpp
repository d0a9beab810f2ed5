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

Pushed outcome(Pushed::Outcome outcome, const Push& push, std::string reason) {
  return {
      .outcome = outcome, .href = push.href, .etag = {}, .code = 0, .reason = std::move(reason)};
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

bool isStill(const Push& push, const FetchedCard& card) {
  if (push.etag.starts_with(kTextMark)) return textMark(card.text) == push.etag;
  return opaqueTag(card.etag) == opaqueTag(push.etag);
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

}  // namespace

void DavBook::push(std::span<const Push> pushes,
                   const std::function<void(std::size_t, Pushed)>& sink) {
  std::vector<Sending> sendings;
  std::vector<HttpClient::Job> looks;
  for (std::size_t at = 0; at < pushes.size(); ++at) {
    const auto& push = pushes[at];
    if (pathOf(push.href).empty()) {
      sink(at, outcome(Pushed::Outcome::Refused, push, "Its place does not lie in the book."));
    } else if (push.kind == Push::Kind::Create) {
      sendings.push_back({at, "If-None-Match: *"});
    } else if (push.etag.empty()) {
      sink(at, outcome(Pushed::Outcome::Changed, push, "Nobody knows what it was there."));
    } else if (!needsLook(push)) {
      sendings.push_back({at, "If-Match: " + push.etag});
    } else {
      looks.push_back(cardGet(
          askableUrl(url_, push.href),
          [&, at](const HttpAnswer& answer) {
            const auto card = cardOf(answer, push.etag);
            if (card.state == FetchedCard::State::Gone) {
              sink(at, outcome(Pushed::Outcome::Gone, push, "It is not there any more."));
            } else if (card.state == FetchedCard::State::Unreadable) {
              sink(at, outcome(Pushed::Outcome::Unknown, push, card.reason));
            } else if (isStill(push, card)) {
              sendings.push_back({at, conditionAfterLook(answer)});
            } else {
              sink(at, outcome(Pushed::Outcome::Changed, push, "It was changed there."));
            }
          },
          [&, at](const std::string& why) {
            sink(at, outcome(Pushed::Outcome::Unknown, push, why));
          }));
    }
  }
  if (!looks.empty()) client_.sendAll(looks, kAtOnce);

  std::vector<HttpClient::Job> jobs;
  bool isInDoubt = false;
  for (const auto& sending : sendings) {
    const auto& push = pushes[sending.at];
    jobs.push_back(
        {.request = [this, &push, &sending] { return requestOf(push, url_, sending.condition); },
         .done =
             [&, at = sending.at](const HttpAnswer& answer) {
               auto pushed = pushedOf(push.kind, push.href, answer);
               // Where the server says it has put it counts only within the book.
               pushed.href =
                   pathOf(pushed.href).empty() ? push.href : askablePath(url_, pushed.href);
               isInDoubt = isInDoubt || mayLackBook(pushed);
               sink(at, std::move(pushed));
             },
         .failed =
             [&, at = sending.at](const std::string& why) {
               sink(at, outcome(Pushed::Outcome::Unknown, push, why));
             },
         .sink = {}});
  }
  if (!jobs.empty()) client_.sendAll(jobs, kAtOnce);
  if (isInDoubt) askItself(kWhetherThere);  // a whole book that is away says the same of each card
}

}  // namespace ox::sync
