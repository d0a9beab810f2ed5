// What a look gives: the sides of each card, with what was fetched of it, and with the record that
// it is about.

#include <algorithm>
#include <array>
#include <utility>
#include <variant>

#include "ox/base/checksum.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/sync/run/look/agreed.hpp"
#include "ox/sync/run/look/book_look.hpp"

namespace ox::sync {
namespace {

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
