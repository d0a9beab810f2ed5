#include "ox/sync/dav/dav_get.hpp"

#include <memory>
#include <utility>

#include "ox/base/text/ascii_case.hpp"
#include "ox/sync/dav/dav_marks.hpp"
#include "ox/sync/dav/wire/multistatus_request.hpp"
#include "ox/sync/remote/remote_error.hpp"

namespace ox::sync {

HttpClient::Job cardGet(std::string url, std::function<void(const HttpAnswer&)> done,
                        std::function<void(const std::string& why)> failed) {
  const auto text = std::make_shared<std::string>();
  HttpClient::Job job;
  job.request = [url = std::move(url)] {
    HttpRequest request;
    request.method = "GET";
    request.url = url;
    request.headers = {"Accept: text/vcard, */*;q=0.1"};
    request.wantsIdentity = true;
    request.onlyReads = true;
    return request;
  };
  job.sink = {.begin = [text](const HttpAnswer&) { text->clear(); },
              .take = [text](std::string_view part) { text->append(part); }};
  job.done = [text, done = std::move(done)](HttpAnswer answer) {
    if (answer.status / 100 == 2) answer.body = std::exchange(*text, {});
    done(answer);
  };
  job.failed = std::move(failed);
  return job;
}

FetchedCard cardOf(const HttpAnswer& answer, const std::string& listedEtag) {
  FetchedCard card;
  if (answer.status == 404 || answer.status == 410) {
    card.state = FetchedCard::State::Gone;
    return card;
  }
  const auto* etag = answer.header("etag");
  const auto* type = answer.header("content-type");
  // Without ETag: what was so for a while only is asked for again.
  if (answer.status != 200) {
    card.reason = sentenceOf(answer) + ".";
    return card;
  }
  // A page with the card's own ETag is what somebody has put into the book.
  if (type && lowerCase(*type).starts_with("text/html")) {
    if (!etag || opaqueTag(*etag) != opaqueTag(listedEtag)) {
      throw RemoteError(RemoteFailure::Protocol,
                        answer.url + " answered with a web page instead of a card.");
    }
    card.etag = listedEtag;
    card.reason = "It is a web page.";
    return card;
  }
  card.state = FetchedCard::State::Read;
  card.text = withNetworkLineEnds(answer.body);
  card.etag = etag && !etag->empty() ? *etag : textMark(card.text);
  return card;
}

std::string_view opaqueTag(std::string_view etag) {
  if (isWeak(etag)) etag.remove_prefix(2);
  return etag;
}

bool isWeak(std::string_view etag) {
  return etag.starts_with("W/");
}

}  // namespace ox::sync
