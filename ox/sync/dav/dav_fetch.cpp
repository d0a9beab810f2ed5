// Cards with their texts: addressbook-multiget (RFC 6352, section 8.7) in batches, GET for those
// that it does not bring.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ox/base/text/keyed_hash.hpp"
#include "ox/sync/dav/dav_book.hpp"
#include "ox/sync/dav/dav_get.hpp"
#include "ox/sync/dav/dav_marks.hpp"
#include "ox/sync/dav/wire/dav_href.hpp"
#include "ox/sync/dav/wire/dav_requests.hpp"
#include "ox/sync/dav/wire/multistatus_request.hpp"
#include "ox/sync/remote/remote_error.hpp"
#include "ox/vcard/lines/markers.hpp"

namespace ox::sync {

namespace {

// More cards a batch gain little, or lose; few where nobody knows how large they are.
constexpr std::size_t kMostCards = 100;
constexpr std::size_t kMostUnknown = 20;
constexpr std::uint64_t kMostBytes = std::uint64_t{4} << 20;
constexpr std::size_t kAtOnce = 2;
constexpr std::size_t kGetsAtOnce = 4;
constexpr std::size_t kBatchesAWave = 32;

using Batch = std::vector<std::size_t>;  // places in the list of what was asked for

// A body of which nothing more is read once it has turned out to be broken.
struct Guarded {
  MultistatusBody& body;
  bool isBroken = false;

  template <typename Step>
  void operator()(const Step& step) {
    if (isBroken) return;
    try {
      step();
    } catch (const RemoteError& error) {
      if (error.kind() != RemoteFailure::Protocol) throw;
      isBroken = true;
    }
  }
};

FetchedCard unreadable(const ListedCard& card, std::string why) {
  return {.state = FetchedCard::State::Unreadable,
          .href = {},
          .etag = card.etag,
          .text = {},
          .reason = std::move(why)};
}

// The cards of one fetch: which ones have been told of.
class Fetch {
 public:
  Fetch(HttpClient& client, const DavBook& book, const std::string& url,
        std::span<const ListedCard> cards, const std::function<void(FetchedCard)>& sink)
      : client_(client), book_(book), url_(url), cards_(cards), sink_(sink), isTold_(cards.size()) {
    for (std::size_t at = 0; at < cards.size(); ++at) {
      auto path = book.pathOf(cards[at].href);
      if (path.empty()) {
        tell(at, unreadable(cards[at], "It does not lie in the book."));
      } else {
        places_.emplace(std::move(path), at);
      }
    }
  }

  void byMultiget();
  // What is left, one by one. Those that did not come are not told of yet: whether that is a
  // matter of theirs shows what the book itself answers.
  void byGet();
  bool hasDoubts() const { return !doubtful_.empty(); }
  void tellDoubtful();

 private:
  struct Sent {
    Batch batch;
    bool isWhole = false;
  };

  void tell(std::size_t at, FetchedCard card) {
    isTold_[at] = true;
    card.href = cards_[at].href;
    sink_(std::move(card));
  }

  Batch left(const Batch& batch) const {
    Batch rest;
    for (const auto at : batch) {
      if (!isTold_[at]) rest.push_back(at);
    }
    return rest;
  }

  std::vector<Batch> firstBatches(std::size_t& from);
  std::vector<Batch> sendWave(const std::vector<Batch>& batches, bool isFirstTry);
  HttpClient::Job jobOf(Sent& sent, MultistatusBody& body, bool isFirstTry);
  void take(const DavResponse& response);

  HttpClient& client_;
  const DavBook& book_;
  const std::string& url_;
  std::span<const ListedCard> cards_;
  const std::function<void(FetchedCard)>& sink_;
  std::vector<bool> isTold_;
  std::unordered_multimap<std::string, std::size_t, KeyedHash> places_;
  // Of those that have come: what the next batch of unknown ones goes by.
  std::uint64_t bytes_ = 0;
  std::size_t read_ = 0;
  bool isUnderstood_ = true;  // the report
  std::vector<std::pair<std::size_t, FetchedCard>> doubtful_;
};

// The next few batches; the place behind the last card of them is kept. The cards whose length is
// not known count as those before them did.
std::vector<Batch> Fetch::firstBatches(std::size_t& from) {
  const auto mean = read_ == 0 ? kMostBytes / kMostUnknown : bytes_ / read_ + 1;
  std::vector<Batch> batches;
  while (from < cards_.size() && batches.size() < (read_ == 0 ? kAtOnce : kBatchesAWave)) {
    Batch batch;
    std::uint64_t bytes = 0;
    for (; from < cards_.size() && batch.size() < kMostCards; ++from) {
      if (isTold_[from]) continue;
      bytes += cards_[from].bytes == 0 ? mean : cards_[from].bytes;
      if (!batch.empty() && bytes > kMostBytes) break;
      batch.push_back(from);
    }
    if (!batch.empty()) batches.push_back(std::move(batch));
  }
  return batches;
}

// A batch that fails as a whole is halved until it is known which card is the reason. Those that a
// whole answer leaves out are left to GET: one server leaves out what is not there, and one what
// it cannot find by that spelling.
void Fetch::byMultiget() {
  std::size_t from = 0;
  while (isUnderstood_ && from < cards_.size()) {
    auto failed = sendWave(firstBatches(from), true);
    while (isUnderstood_ && !failed.empty()) {
      std::vector<Batch> halves;
      for (const auto& batch : failed) {
        if (batch.size() < 2) continue;
        const auto middle = batch.begin() + static_cast<std::ptrdiff_t>(batch.size() / 2);
        halves.emplace_back(batch.begin(), middle);
        halves.emplace_back(middle, batch.end());
      }
      failed = sendWave(halves, false);
      isUnderstood_ = isUnderstood_ && (!failed.empty() || read_ > 0);
    }
  }
}

// What of each batch that failed has not come.
std::vector<Batch> Fetch::sendWave(const std::vector<Batch>& batches, bool isFirstTry) {
  std::deque<Sent> sent;
  std::deque<MultistatusBody> bodies;
  std::vector<HttpClient::Job> jobs;
  for (const auto& batch : batches) {
    sent.push_back({.batch = batch, .isWhole = false});
    bodies.emplace_back(nullptr, [this](const DavResponse& response) { take(response); });
    jobs.push_back(jobOf(sent.back(), bodies.back(), isFirstTry));
  }
  if (!jobs.empty()) client_.sendAll(jobs, kAtOnce);
  std::vector<Batch> failed;
  for (const auto& each : sent) {
    if (each.isWhole) continue;
    auto rest = left(each.batch);
    if (!rest.empty()) failed.push_back(std::move(rest));
  }
  return failed;
}

// What ends this one answer must not end the others, so nothing that is wrong with it is thrown
// while it comes: one card that XML cannot hold makes the answer ill-formed. Halves are not tried
// again where they fail: they are halved.
HttpClient::Job Fetch::jobOf(Sent& sent, MultistatusBody& body, bool isFirstTry) {
  const auto guarded = std::make_shared<Guarded>(Guarded{body, false});
  HttpClient::Job job;
  job.request = [this, &sent, isFirstTry] {
    std::vector<std::string> hrefs;
    for (const auto at : sent.batch) hrefs.push_back(cards_[at].href);
    auto request = multiget(url_, hrefs);
    request.onlyReads = isFirstTry;
    return request;
  };
  job.sink.begin = [guarded](const HttpAnswer& head) {
    guarded->isBroken = false;
    (*guarded)([&] { guarded->body.begin(head); });
  };
  job.sink.take = [guarded](std::string_view part) {
    (*guarded)([&] { guarded->body.take(part); });
  };
  job.done = [this, &sent, guarded](const HttpAnswer& answer) {
    if (answer.status == 405 || answer.status == 415 || answer.status == 501) isUnderstood_ = false;
    if (answer.status != 207) return;
    (*guarded)([&] { guarded->body.finish(answer); });
    sent.isWhole = !guarded->isBroken;
  };
  job.failed = [](const std::string&) {};
  return job;
}

// One card, unless it was told of before, nobody asked for it, or its text or ETag is missing. Each
// stands for itself: it is taken even when the rest of the answer turns out to be broken.
void Fetch::take(const DavResponse& response) {
  const auto* text = response.property(dav::kCardText);
  const auto etag = etagIn(response);
  if (response.status / 100 > 2 || !text || text->value().empty() || etag.empty()) {
    return;
  }
  const auto [first, last] = places_.equal_range(book_.pathOf(response.href));
  for (auto place = first; place != last; ++place) {
    if (isTold_[place->second]) continue;
    ++read_;
    bytes_ += text->text.size();
    tell(place->second, {.state = FetchedCard::State::Read,
                         .href = {},
                         .etag = etag,
                         .text = withNetworkLineEnds(text->text),
                         .reason = {}});
  }
}

void Fetch::byGet() {
  std::vector<HttpClient::Job> jobs;
  for (std::size_t at = 0; at < cards_.size(); ++at) {
    if (isTold_[at]) continue;
    jobs.push_back(cardGet(
        askableUrl(url_, cards_[at].href),
        [this, at](const HttpAnswer& answer) {
          auto card = cardOf(answer, cards_[at].etag);
          const bool isWhole = card.state == FetchedCard::State::Read && vcard::hasEnd(card.text);
          if (isWhole) {
            tell(at, std::move(card));
          } else {
            doubtful_.emplace_back(at, std::move(card));
          }
        },
        [this, at](const std::string& why) { tell(at, unreadable(cards_[at], why)); }));
  }
  if (!jobs.empty()) client_.sendAll(jobs, kGetsAtOnce);
}

void Fetch::tellDoubtful() {
  for (auto& [at, card] : doubtful_) tell(at, std::move(card));
}

}  // namespace

void DavBook::fetch(std::span<const ListedCard> cards,
                    const std::function<void(FetchedCard)>& sink) {
  Fetch fetch(client_, *this, url_, cards, sink);
  if (abilities_.multiget.value_or(true)) fetch.byMultiget();
  fetch.byGet();
  if (!fetch.hasDoubts()) return;
  // Where the whole book is away, no card of it is gone; where the server fails, or somebody on the
  // way to it, none is unreadable.
  askItself(kWhetherThere);
  fetch.tellDoubtful();
}

}  // namespace ox::sync
