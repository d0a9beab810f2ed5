#include "tests/sync/run/book_elsewhere.hpp"

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <utility>

namespace ox::test {

using sync::Push;
using sync::Pushed;

void BookElsewhere::begin(std::string what) {
  log.push_back(std::move(what));
  if (breaksBefore == requests) {
    ++requests;
    throw sync::RemoteError(sync::RemoteFailure::Unreachable, "the connection broke");
  }
}

void BookElsewhere::end() {
  if (breaksAfter == requests++) {
    throw sync::RemoteError(sync::RemoteFailure::Unreachable, "the connection broke");
  }
}

void BookElsewhere::put(const std::string& href, const std::string& text) {
  ++changes_;
  gone_.erase(href);
  auto& card = cards_[href];
  card.text = text;
  card.change = changes_;
  const auto mark =
      marksByContent ? std::to_string(std::hash<std::string>()(text)) : std::to_string(changes_);
  if (!keepsEtags || card.etag.empty()) card.etag = "\"" + mark + "\"";
}

void BookElsewhere::erase(const std::string& href) {
  cards_.erase(href);
  gone_[href] = ++changes_;
}

const std::string& BookElsewhere::onlyText() const {
  return cards_.at(onlyHref()).text;
}

const std::string& BookElsewhere::onlyHref() const {
  if (cards_.size() != 1) throw std::logic_error("there are " + std::to_string(cards_.size()));
  return cards_.begin()->first;
}

sync::Listing BookElsewhere::list(const std::string& token) {
  begin("LIST");
  if (marksByContent) {
    auto listing = listByContent(token);
    end();
    return listing;
  }
  sync::Listing listing;
  const bool isSince =
      givesTokens && !token.empty() && (!listsAllOrNothing || token == std::to_string(changes_));
  const auto since = isSince ? std::stoull(token) : 0;
  listing.isWhole = !isSince;
  for (const auto& [href, card] : cards_) {
    if (!listsNothing && (!isSince || forgetsTokens || card.change > since)) {
      listing.cards.push_back({href, card.etag, card.text.size()});
    }
  }
  if (isSince && !forgetsTokens) {
    for (const auto& [href, change] : gone_) {
      if (change > since) listing.gone.push_back(href);
    }
  }
  if (givesTokens) listing.token = std::to_string(changes_);
  end();
  return listing;
}

sync::Listing BookElsewhere::listByContent(const std::string& token) {
  std::map<std::string, std::string> now;
  for (const auto& [href, card] : cards_) now[href] = card.etag;
  const auto before =
      token.empty() ? std::map<std::string, std::string>() : held_.at(std::stoull(token));
  sync::Listing listing;
  listing.isWhole = token.empty();
  for (const auto& [href, etag] : now) {
    const auto old = before.find(href);
    if (old == before.end() || old->second != etag) {
      listing.cards.push_back({.href = href, .etag = etag, .bytes = 0});
    }
  }
  for (const auto& [href, etag] : before) {
    if (!now.contains(href)) listing.gone.push_back(href);
  }
  const auto state = std::ranges::find(held_, now);
  listing.token = std::to_string(state - held_.begin());
  if (state == held_.end()) held_.push_back(now);
  return listing;
}

void BookElsewhere::fetch(std::span<const sync::ListedCard> cards,
                          const std::function<void(sync::FetchedCard)>& sink) {
  begin("FETCH " + std::to_string(cards.size()));
  std::vector<sync::FetchedCard> fetched;
  for (const auto& card : cards) {
    sync::FetchedCard answer;
    answer.href = card.href;
    const auto found = cards_.find(card.href);
    if (found == cards_.end()) {
      answer.state = sync::FetchedCard::State::Gone;
    } else if (failing.contains(card.href)) {
      answer.reason = "not now";
    } else {
      answer.state = sync::FetchedCard::State::Read;
      answer.etag = found->second.etag;
      answer.text = found->second.text;
    }
    fetched.push_back(std::move(answer));
  }
  end();
  for (auto& answer : fetched) sink(std::move(answer));
}

void BookElsewhere::push(std::span<const Push> pushes,
                         const std::function<void(std::size_t, Pushed)>& sink) {
  for (std::size_t i = 0; i < pushes.size(); ++i) {
    const auto& push = pushes[i];
    if (beforePush) beforePush(push);
    const char* const verb = push.kind == Push::Kind::Create   ? "CREATE "
                             : push.kind == Push::Kind::Update ? "PUT "
                                                               : "DELETE ";
    begin(verb + push.href);
    auto answer = refuse ? refuse(push) : std::nullopt;
    if (!answer) answer = pushed(push);
    end();
    sink(i, std::move(*answer));
  }
}

Pushed BookElsewhere::pushed(const Push& push) {
  Pushed answer;
  answer.href = push.href;
  answer.outcome = Pushed::Outcome::Done;
  const auto found = cards_.find(push.href);
  if (push.kind == Push::Kind::Create) {
    if (found != cards_.end()) {
      answer.outcome = Pushed::Outcome::Exists;
      return answer;
    }
  } else {
    if (found == cards_.end()) {
      answer.outcome = Pushed::Outcome::Gone;
      return answer;
    }
    const bool isOther = found->second.etag != push.etag;
    if (isOther || (keepsEtags && !push.isOf(found->second.text))) {
      answer.outcome = Pushed::Outcome::Changed;
      return answer;
    }
  }
  if (push.kind == Push::Kind::Remove) {
    erase(push.href);
    return answer;
  }
  const auto text = push.text();
  put(push.href, rewrite ? rewrite(text) : text);
  if (givesEtagsOnPut) answer.etag = cards_.at(push.href).etag;
  return answer;
}

}  // namespace ox::test
