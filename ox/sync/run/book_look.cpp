#include "ox/sync/run/book_look.hpp"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/base/text/ascii_case.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/sync/run/agreed.hpp"

namespace ox::sync {
namespace {

constexpr std::size_t kPathsAtOnce = 1000;

// One that nobody could read when it was listed, and that has no record for that reason.
bool hasNeverHadRecord(const SyncCard& card) {
  return card.record.isNone() && card.fingerprint == 0 && card.intent == SyncCard::Intent::None;
}

// What was fetched of a card, nothing else of which is known yet.
CardSides sidesOfFetched(FetchedCard fetched) {
  CardSides sides;
  sides.theirs = std::move(fetched);
  switch (sides.theirs.state) {
    case FetchedCard::State::Gone:
      sides.there = CardSides::There::Gone;
      return sides;
    case FetchedCard::State::Unreadable:
      sides.there = CardSides::There::Unreadable;
      return sides;
    case FetchedCard::State::Read:
      break;
  }
  auto read = readWholeCard(sides.theirs.text);
  if (auto* card = std::get_if<ReadCard>(&read)) {
    sides.there = CardSides::There::Read;
    sides.read = std::move(*card);
  } else {
    sides.there = CardSides::There::Unreadable;
    sides.theirs.reason = std::get<std::string>(std::move(read));
  }
  return sides;
}

// Of a card that is known: what was fetched of it beside.
CardSides withFetched(CardSides known, CardSides fetched) {
  known.there = fetched.there;
  known.theirs = std::move(fetched.theirs);
  known.read = std::move(fetched.read);
  return known;
}

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

void BookLook::giveFetched(const std::function<void(CardSides)>& sink,
                           const std::function<void(std::size_t, std::size_t)>& progress) {
  // What is known first: a card may stand in another one's place, whose own is then elsewhere.
  std::vector<std::string> known;
  std::vector<std::string> unknown;
  for (const auto& path : fetchOrder_) {
    const auto& card = toFetch_.at(path).known.card;
    const bool isKnown = card.id != 0 && !hasNeverHadRecord(card);
    (isKnown ? known : unknown).push_back(path);
  }
  if (fetchOrder_.empty()) return;
  std::size_t done = 0;
  progress(done, fetchOrder_.size());
  std::vector<std::pair<std::string, CardSides>> displaced;
  fetch(known, [&](const std::string& path, FetchedCard card) {
    progress(++done, fetchOrder_.size());
    auto fetched = sidesOfFetched(std::move(card));
    const auto& [listed, was, isIntent] = toFetch_.at(path);
    if (isIntent && fetched.there == CardSides::There::Gone) {
      // It may have arrived at a place of the other side's choice.
      toFetch_.erase(path);
      return;
    }
    const auto uid = comparableUid(was.card.uid);
    const auto uidNow = fetched.read ? comparableUid(fetched.read->uid) : std::string();
    const bool isThatCard = uid.empty() || uidNow.empty() || uid == uidNow;
    if (isThatCard || (isIntent && isAgreedContent(textsOf(was.card), fetched.read->content))) {
      return takeKnown(path, std::move(fetched), sink);
    }
    addGone(was);
    vacated_.insert(path);
    displaced.emplace_back(path, std::move(fetched));
  });
  for (auto& [path, card] : displaced) takeUnknown(path, std::move(card), sink);
  fetch(unknown, [&](const std::string& path, FetchedCard card) {
    progress(++done, fetchOrder_.size());
    takeUnknown(path, sidesOfFetched(std::move(card)), sink);
  });
  toFetch_ = {};  // what is decided of them needs the room
}

void BookLook::fetch(const std::vector<std::string>& paths,
                     const std::function<void(const std::string&, FetchedCard)>& take) {
  std::vector<ListedCard> wanted;
  wanted.reserve(paths.size());
  for (const auto& path : paths) wanted.push_back(toFetch_.at(path).listed);
  if (wanted.empty()) return;
  remote_.fetch(wanted, [&](FetchedCard fetched) {
    const auto path = remote_.pathOf(fetched.href);
    if (toFetch_.contains(path)) take(path, std::move(fetched));
  });
}

void BookLook::takeKnown(const std::string& path, CardSides fetched,
                         const std::function<void(CardSides)>& sink) {
  const auto& was = toFetch_.at(path);
  const auto here = changedHere_.find(path);
  auto sides = withFetched(sidesOf(here != changedHere_.end() ? here->second : was.known),
                           std::move(fetched));
  changedHere_.erase(path);
  sides.isFirstMeeting = was.isIntent;
  if (sides.card.kind == RecordKind::Group) {
    groups_.push_back(std::move(sides));
  } else {
    sink(std::move(sides));
  }
}

void BookLook::takeUnknown(const std::string& path, CardSides sides,
                           const std::function<void(CardSides)>& sink) {
  if (sides.there == CardSides::There::Gone) return;  // it came and went
  sides.card.container = local_.container();
  sides.card.path = path;
  const auto& known = toFetch_.at(path).known.card;
  if (hasNeverHadRecord(known)) sides.rowInTheWay = known.id;
  const bool isMoved = sides.read && (recogniseMoved(sides) || recogniseCreated(sides));
  if (sides.read && !isMoved) recogniseRecord(sides);
  sink(std::move(sides));
}

// The other side has given the card another place.
bool BookLook::recogniseMoved(CardSides& sides) {
  const auto path = goneByUid_.find(comparableUid(sides.read->uid));
  const auto moved = path != goneByUid_.end() ? gone_.find(path->second) : gone_.end();
  if (moved == gone_.end()) return false;
  placeAnew(sides, moved->second);
  vacated_.erase(moved->first);
  gone_.erase(moved);
  return true;
}

void BookLook::placeAnew(CardSides& sides, const SyncCardNow& known) {
  const auto newPath = sides.card.path;
  const auto inTheWay = sides.rowInTheWay;
  sides = withFetched(sidesOf(known), std::move(sides));
  changedHere_.erase(sides.card.path);
  sides.formerPath = std::exchange(sides.card.path, newPath);
  sides.rowInTheWay = inTheWay;
}

// What this side was about to create stands at another place already.
bool BookLook::recogniseCreated(CardSides& sides) {
  const auto uid = comparableUid(sides.read->uid);
  if (uid.empty()) return false;
  const auto kind = sides.read->content.isGroup ? RecordKind::Group : RecordKind::Person;
  for (const auto& [path, card] : changedHere_) {
    const bool isIt = card.card.intent == SyncCard::Intent::Create && card.card.kind == kind &&
                      !card.card.record.isNone() && comparableUid(card.card.uid) == uid;
    if (!isIt || toFetch_.contains(path)) continue;
    const auto known = card;
    placeAnew(sides, known);
    sides.isFirstMeeting = true;
    return true;
  }
  return false;
}

void BookLook::recogniseRecord(CardSides& sides) {
  if (withoutCard_.empty()) return;
  const auto& card = *sides.read;
  const auto uid = uidKey(card.uid);
  const auto kind = card.content.isGroup ? RecordKind::Group : RecordKind::Person;
  const auto take = [&](const RecordKey& key) {
    if (!recognised_.insert(key).second) return false;
    sides.ours = local_.contentOf(key, kind);
    if (!sides.ours) return false;
    sides.card.record = key;
    sides.card.kind = kind;
    sides.isFirstMeeting = true;
    return true;
  };
  if (!uid.empty()) {
    const std::array sought{SoughtRecord{uid}};
    const auto found = containerSource().matches(local_.container(), kind, sought);
    for (const auto& record : found.front()) {
      if (withoutCardByKey_.contains(record.key) && take(record.key)) return;
    }
  }
  const auto fingerprint = contentFingerprint(
      propertiesOfRecord(card.content), card.content.photo ? checksum64(*card.content.photo) : 0);
  const auto [first, last] = withoutCardByContent_.equal_range(fingerprint);
  for (auto it = first; it != last; ++it) {
    if (it->second->kind == kind && take(it->second->key)) return;
  }
}

void BookLook::giveOthers(const std::function<void(CardSides)>& sink,
                          const std::unordered_set<std::string>& broughtBack) {
  std::vector<const SyncCardNow*> gone;
  for (const auto& [path, card] : gone_) gone.push_back(&card);
  std::vector<const SyncCardNow*> changed;
  for (const auto& [path, card] : changedHere_) {
    if (!gone_.contains(path)) changed.push_back(&card);
  }
  const auto byId = [](const SyncCardNow* card) { return card->card.id; };
  std::ranges::sort(gone, {}, byId);
  std::ranges::sort(changed, {}, byId);
  const auto give = [&](CardSides sides) {
    if (sides.card.kind == RecordKind::Group) {
      groups_.push_back(std::move(sides));
    } else {
      sink(std::move(sides));
    }
  };
  for (const auto* card : changed) {
    auto sides = sidesOf(*card);
    // It never arrived.
    if (card->card.intent == SyncCard::Intent::Create) sides.there = CardSides::There::Gone;
    give(std::move(sides));
  }
  for (const auto* card : gone) {
    auto sides = sidesOf(*card);
    sides.there = CardSides::There::Gone;
    sides.isVacated = vacated_.contains(card->card.path);
    give(std::move(sides));
  }
  for (auto& sides : groups_) {
    keepMembers(sides, broughtBack);
    sink(std::move(sides));
  }
}

// Who was deleted here and comes back is a member still.
void BookLook::keepMembers(CardSides& sides, const std::unordered_set<std::string>& broughtBack) {
  if (!sides.ours || broughtBack.empty() || sides.card.id == 0) return;
  const std::array ids{sides.card.id};
  const auto texts = syncSource().syncCardTexts(ids);
  if (texts.empty()) return;
  auto& members = sides.ours->content.members;
  for (auto& member : agreedContent(sides.card, texts.front(), nullptr).members) {
    const bool isMissing = std::ranges::find(members, member) == members.end();
    if (isMissing && broughtBack.contains(member)) members.push_back(std::move(member));
  }
}

std::vector<RecordWithoutCard> BookLook::newHere() const {
  std::vector<RecordWithoutCard> records;
  for (const auto& record : withoutCard_) {
    if (!recognised_.contains(record.key)) records.push_back(record);
  }
  return records;
}

}  // namespace ox::sync
