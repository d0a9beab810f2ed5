#include "ox/sync/run/look/book_look.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/base/text/ascii_case.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/sync/run/look/agreed.hpp"

namespace ox::sync {
namespace {

constexpr std::size_t kPathsAtOnce = 1000;

}  // namespace

void BookLook::lookHere() {
  const auto& container = local_.container();
  const auto note = [&](SyncCardNow card) {
    if (hasNeverHadRecord(card.card) || isNoCard(card.card.kind)) return;
    auto path = card.card.path;
    changedHere_.insert_or_assign(std::move(path), std::move(card));
  };
  for (auto& card : syncSource().changedSyncCards(container)) note(std::move(card));
  for (auto& card : syncSource().syncCardsOfGroups(container)) {
    const bool isThere = card.now && !card.card.record.isNone();
    if (isThere && local_.besideOfGroup(card.card.record) != card.card.beside) {
      note(std::move(card));
    }
  }
  withoutCard_ = syncSource().recordsWithoutCard(container);
  std::erase_if(withoutCard_, [&](const auto& record) { return isNoCard(record.kind); });
  for (const auto& record : withoutCard_) {
    withoutCardByKey_.emplace(record.key, &record);
    withoutCardByContent_.emplace(record.fingerprint, &record);
  }
  for (auto& card : cardsWithOtherTags()) note(std::move(card));
  takeOver();
}

// A card whose record was removed is that of a new record with its UID: what was moved away and
// back, or imported anew, is an edit and no deletion.
void BookLook::takeOver() {
  std::unordered_map<std::string, SyncCardNow*> withoutRecord;
  for (auto& [path, card] : changedHere_) {
    const auto uid = comparableUid(card.card.uid);
    if (card.card.record.isNone() && !uid.empty()) withoutRecord.emplace(uid, &card);
  }
  if (withoutRecord.empty()) return;
  for (const auto& record : withoutCard_) {
    const auto card = withoutRecord.find(comparableUid(local_.uidOf(record.key)));
    if (card == withoutRecord.end() || card->second->card.kind != record.kind) continue;
    card->second->card.record = record.key;
    card->second->now = record.fingerprint;
    recognised_.insert(record.key);
    withoutRecord.erase(card);
  }
}

// Groups that categories stand for.
bool BookLook::isNoCard(RecordKind kind) {
  return kind == RecordKind::Group && local_.categoryGroups() != nullptr;
}

// Whether somebody has tags of whom none were agreed takes a look at every card, so that is asked
// only where there are tags that no card accounts for.
std::vector<SyncCardNow> BookLook::cardsWithOtherTags() {
  auto tagged = local_.besideOfTagged();
  std::vector<SyncCardNow> changed;
  for (auto& card : syncSource().taggedSyncCards(local_.container())) {
    if (!card.now || card.card.record.isNone()) continue;
    const auto found = tagged.find(card.card.record.text());
    const auto beside = found != tagged.end() ? found->second : 0;
    if (found != tagged.end()) tagged.erase(found);
    if (beside != card.card.beside) changed.push_back(std::move(card));
  }
  for (const auto& record : withoutCard_) tagged.erase(record.key.text());
  if (tagged.empty()) return changed;
  for (auto& card : syncSource().syncCards(local_.container())) {
    const bool isNews = card.now && card.card.kind == RecordKind::Person &&
                        tagged.contains(card.card.record.text());
    if (isNews) changed.push_back(std::move(card));
  }
  return changed;
}

bool BookLook::isEdit(const SyncCardNow& card) {
  return local_.categoryGroups() != nullptr || card.card.kind == RecordKind::Group ||
         card.card.record.isNone() || card.now != card.card.fingerprint;
}

std::vector<CardSides> BookLook::changesHere() {
  std::vector<const SyncCardNow*> changed;
  for (const auto& [path, card] : changedHere_) {
    if (isEdit(card)) changed.push_back(&card);
  }
  std::ranges::sort(changed, {}, [](const SyncCardNow* card) { return card->card.id; });
  std::vector<CardSides> sides;
  sides.reserve(changed.size());
  for (const auto* card : changed) sides.push_back(sidesOf(*card));
  return sides;
}

std::size_t BookLook::knownCards() {
  return syncSource().countAgreedSyncCards(local_.container());
}

bool BookLook::isFirstMeeting() {
  return knownCards() == 0 && !withoutCard_.empty() && !listing_.cards.empty();
}

bool BookLook::isSuddenlyEmpty() {
  return listing_.isWhole && listing_.cards.empty() && !gone_.empty();
}

void BookLook::lookThere(const std::string& token, std::string_view sent, Ask ask,
                         ChangesHere changes) {
  ask_ = ask;
  listing_ = remote_.list(token);
  const bool tellsNews = !listing_.isWhole;
  std::unordered_set<std::string> toldGone;
  if (tellsNews) lookAtNews();
  if (tellsNews && (ask == Ask::Everything || isNoNews(sent))) {
    for (const auto& [path, card] : gone_) toldGone.insert(path);
    listing_ = remote_.list({});
    toFetch_.clear();
    fetchOrder_.clear();
    gone_.clear();
    goneByUid_.clear();
  }
  if (listing_.isWhole) lookAtWholeListing();
  if (listing_.isWhole && (tellsNews || listing_.hasLostToken)) {
    for (const auto& [path, card] : gone_) {
      if (!toldGone.contains(path)) doubtful_.insert(path);
    }
  }
  askForUnread();
  for (const auto& [path, card] : changedHere_) {
    // What this side was about to create may have arrived, whatever became of the answer.
    const bool isIntent = card.card.intent == SyncCard::Intent::Create;
    const bool wasSent = isIntent && card.card.refused.empty();
    const bool isWanted = changes == ChangesHere::Fetched && isEdit(card);
    if ((!wasSent && !isWanted) || toFetch_.contains(path) || gone_.contains(path)) continue;
    if (listing_.isWhole && isIntent) continue;  // it is not there
    fetchOrder_.push_back(path);
    toFetch_.emplace(path, ToFetch{{card.card.href, {}, 0}, card, isIntent});
  }
}

// What failed for a while only is asked for whether it is listed or not.
void BookLook::askForUnread() {
  if (listing_.isWhole) return;
  for (auto& now : syncSource().refusedSyncCards(local_.container())) {
    const auto& card = now.card;
    const bool isUnread = card.refusedFingerprint == kUnreadable && card.etag.empty();
    if (!isUnread || toFetch_.contains(card.path) || gone_.contains(card.path)) continue;
    fetchOrder_.push_back(card.path);
    toFetch_.emplace(card.path, ToFetch{{card.href, {}, 0}, now, false});
  }
}

void BookLook::noteListed(const ListedCard& listed, const SyncCardNow* known) {
  const auto path = remote_.pathOf(listed.href);
  const bool isKnown = known != nullptr && known->card.id != 0;
  const bool isIntent = isKnown && known->card.intent == SyncCard::Intent::Create;
  const bool isAskedAgain = ask_ == Ask::Everything && isKnown && !known->card.refused.empty() &&
                            known->card.refusedFingerprint == kUnreadable;
  const bool isSame = isKnown && !isIntent && !isAskedAgain && !listed.etag.empty() &&
                      known->card.etag == listed.etag;
  if (path.empty() || isSame) return;
  if (toFetch_.emplace(path, ToFetch{listed, isKnown ? *known : SyncCardNow(), isIntent}).second) {
    fetchOrder_.push_back(path);
  }
}

void BookLook::noteGone(const SyncCardNow& known) {
  // What was to be created was not there before either.
  if (known.card.id == 0 || known.card.intent == SyncCard::Intent::Create) return;
  addGone(known);
}

void BookLook::addGone(const SyncCardNow& known) {
  const auto here = changedHere_.find(known.card.path);
  const auto& card = here != changedHere_.end() ? here->second : known;
  if (const auto uid = comparableUid(card.card.uid); !uid.empty()) {
    goneByUid_.emplace(uid, card.card.path);
  }
  gone_.emplace(card.card.path, card);
}

void BookLook::lookAtWholeListing() {
  const auto cards = syncSource().syncCards(local_.container());
  struct Known {
    const SyncCardNow* card = nullptr;
    bool isListed = false;
  };
  std::unordered_map<std::string_view, Known> known;
  known.reserve(cards.size());
  for (const auto& card : cards) known.emplace(card.card.path, Known{&card});
  for (const auto& card : listing_.cards) {
    const auto found = known.find(remote_.pathOf(card.href));
    const bool isKnown = found != known.end();
    noteListed(card, isKnown ? found->second.card : nullptr);
    if (isKnown) found->second.isListed = true;
  }
  for (const auto& card : cards) {
    if (!known.at(card.card.path).isListed) noteGone(card);
  }
}

void BookLook::lookAtNews() {
  const auto eachKnown = [&](std::size_t count, const auto& pathAt, const auto& take) {
    for (std::size_t first = 0; first < count; first += kPathsAtOnce) {
      std::vector<std::string> paths;
      for (auto i = first; i < std::min(count, first + kPathsAtOnce); ++i) {
        paths.push_back(pathAt(i));
      }
      const auto known = syncSource().syncCardsAt(local_.container(), paths);
      for (std::size_t i = 0; i < known.size(); ++i) take(first + i, known[i]);
    }
  };
  eachKnown(
      listing_.cards.size(), [&](std::size_t i) { return remote_.pathOf(listing_.cards[i].href); },
      [&](std::size_t i, const SyncCardNow& known) { noteListed(listing_.cards[i], &known); });
  eachKnown(
      listing_.gone.size(), [&](std::size_t i) { return remote_.pathOf(listing_.gone[i]); },
      [&](std::size_t, const SyncCardNow& known) { noteGone(known); });
}

// A server that does not know a token any more may answer it with everything that it holds, and
// names nothing then that is gone. And one need not tell of what has come and gone since the token,
// nor of what is again as it was then: when it leaves out what was sent from here, somebody else
// has taken that back.
bool BookLook::isNoNews(std::string_view sent) const {
  std::unordered_set<std::string> missing;
  for (std::size_t at = 0; at < sent.size();) {
    const auto end = std::min(sent.find('\n', at), sent.size());
    missing.insert(remote_.pathOf(sent.substr(at, end - at)));
    at = end + 1;
  }
  std::size_t known = 0;
  for (const auto& card : listing_.cards) {
    const auto path = remote_.pathOf(card.href);
    if (missing.erase(path) == 0 && !path.empty() && !toFetch_.contains(path)) ++known;
  }
  for (const auto& href : listing_.gone) missing.erase(remote_.pathOf(href));
  return !missing.empty() || (listing_.gone.empty() && known > toFetch_.size());
}

CardSides BookLook::sidesOf(const SyncCardNow& card) {
  CardSides sides;
  sides.card = card.card;
  if (!card.card.record.isNone()) sides.ours = local_.contentOf(card.card.record, card.card.kind);
  addUnlinked(sides);
  return sides;
}

// What a card says of members that are no records here is said still.
void BookLook::addUnlinked(CardSides& sides) {
  if (!sides.ours || !sides.ours->content.isGroup || sides.card.id == 0) return;
  const std::array ids{sides.card.id};
  const auto texts = syncSource().syncCardTexts(ids);
  if (texts.empty()) return;
  auto& members = sides.ours->content.members;
  for (auto& member : unlinkedMembers(texts.front())) {
    if (std::ranges::find(members, member) == members.end()) members.push_back(std::move(member));
  }
}

}  // namespace ox::sync
