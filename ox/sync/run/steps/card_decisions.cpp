#include "ox/sync/run/steps/card_decisions.hpp"

#include <algorithm>
#include <array>
#include <utility>

#include "ox/base/checksum.hpp"
#include "ox/base/uuid.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/sync/cards/card_edit.hpp"
#include "ox/sync/run/look/agreed.hpp"
#include "ox/vcard/properties/full_name.hpp"

namespace ox::sync {
namespace {

std::uint64_t pictureOf(const CardContent& content) {
  return content.photo ? checksum64(*content.photo) : 0;
}

std::uint64_t fingerprintOf(const PropertyBag& properties, const CardContent& content) {
  return contentFingerprint(properties, pictureOf(content));
}

std::shared_ptr<const CardContent> withoutPhoto(CardContent content) {
  content.photo = nullptr;
  return std::make_shared<const CardContent>(std::move(content));
}

}  // namespace

std::string nameOfContent(const CardContent& content) {
  const auto textOf = [&](PropertyId id) {
    const auto* text = content.properties.text(id);
    return text != nullptr ? std::string_view(*text) : std::string_view();
  };
  std::string name(textOf(property_id::kGroupName));
  if (name.empty()) {
    vcard::composeFullName({.last = textOf(property_id::kLast),
                            .first = textOf(property_id::kFirst),
                            .middle = textOf(property_id::kMiddle)},
                           name);
  }
  for (const auto id :
       {property_id::kOrganization, property_id::kNickname, property_id::kCardUid}) {
    if (name.empty()) name = textOf(id);
  }
  return name.empty() ? "(no name)" : name;
}

// What each side was when both last agreed.
struct CardDecisions::Bases {
  CardContent theirs;
  CardContent ours;
};

std::optional<CardStep> CardDecisions::decide(CardSides sides) {
  const auto row = sides.card.id;
  const auto formerPath = sides.formerPath;
  const auto inTheWay = sides.rowInTheWay;
  auto step = decided(std::move(sides));
  if (!step) return step;
  if (inTheWay != 0) step->rowsInTheWay.push_back(inTheWay);
  if (formerPath.empty()) return step;
  if (step->removesRow) {
    step->card.path = formerPath;
  } else {
    step->formerPath = formerPath;
    step->rowsInTheWay.push_back(row);
    step->card.id = 0;
  }
  return step;
}

std::optional<CardStep> CardDecisions::decided(CardSides sides) {
  switch (sides.there) {
    case CardSides::There::Same:
      return withoutChangeThere(sides);
    case CardSides::There::Gone:
      return goneThere(sides);
    case CardSides::There::Unreadable:
      return unreadable(sides, std::move(sides.theirs.reason));
    case CardSides::There::Read:
      return readThere(sides);
  }
  return std::nullopt;
}

// What the other side refused, and is still the same; or a text there that nobody could read, which
// must not be written over.
bool CardDecisions::isRefusedAsItIs(const SyncCard& card, const LocalContent& ours) const {
  if (card.refused.empty()) return false;
  return card.refusedFingerprint == kUnreadable ||
         card.refusedFingerprint == sumOf(ours.fingerprint, ours.beside);
}

bool CardDecisions::hasOpenConflict(const SyncCard& card) {
  if (!conflicts_) {
    conflicts_.emplace();
    for (auto& conflict : syncSource().syncConflicts()) {
      if (conflict.container == book_.container()) conflicts_->insert(std::move(conflict.path));
    }
  }
  return conflicts_->contains(card.path);
}

// Of a card that no text stands for yet.
std::string CardDecisions::freshText(RecordKind kind, const CardContent& content,
                                     std::string_view uid) const {
  const bool isGroupOf4 = kind == RecordKind::Group && rules_.writesGroupsAs4;
  return newCard(content, uid, isGroupOf4 ? vcard::CardVersion::V40 : rules_.version,
                 {rules_.revision});
}

CardDecisions::Bases CardDecisions::basesOf(const CardSides& sides, const SyncCard::Texts& texts) {
  const auto& photo = sides.ours ? sides.ours->content.photo : Data();
  Bases bases;
  bases.ours = agreedContent(sides.card, texts, photo);
  auto read = readCard(agreedText(texts, photo));
  if (auto* card = std::get_if<ReadCard>(&read)) bases.theirs = std::move(card->content);
  // The base's picture is not kept beside the one of the record: where that was changed, only the
  // number of the former one is known.
  const auto* now = sides.read ? &sides.read->content : nullptr;
  if (now != nullptr && now->photo && bases.ours.photo && bases.theirs.photo &&
      agreedPicture(texts) == pictureOf(*now)) {
    bases.theirs.photo = now->photo;
  }
  return bases;
}

std::optional<CardStep> CardDecisions::withoutChangeThere(CardSides& sides) {
  if (!sides.ours) {
    // What nobody could read there is another text than the one that was deleted here.
    const bool isOther =
        !sides.card.refused.empty() && (sides.card.refusedFingerprint == kUnreadable ||
                                        sides.card.refusedFingerprint == kDeletionRefused);
    if (sides.card.fingerprint == 0 || isOther || !rules_.pushes) return std::nullopt;
    CardStep step;
    step.card = std::move(sides.card);
    step.name = nameOfContent(agreedContent(step.card, textsOf(step.card), nullptr));
    step.there = CardStep::There::Delete;
    step.etag = step.card.etag;
    step.removesRow = true;
    return step;
  }
  const auto& ours = *sides.ours;
  CardStep step;
  step.card = sides.card;
  step.record = step.card.record;
  step.name = nameOfContent(ours.content);
  if (!rules_.pushes || isRefusedAsItIs(step.card, ours)) return std::nullopt;
  step.card.intent = SyncCard::Intent::None;
  const auto texts = textsOf(step.card);
  const auto bases = basesOf(sides, texts);
  const auto merged = merge(&bases.theirs, bases.theirs, &bases.ours, ours.content);
  if (ours.content.isGroup) {
    step.membersBefore = ours.linked;
    step.members = ours.content.members;
  }
  if (!merged.changesTheirs) {
    // Nothing that the text could say: what is agreed is what stands here.
    step.texts.emplace(agreedTexts(agreedText(texts, ours.content.photo), ours.content), spill_);
    step.card.fingerprint = ours.fingerprint;
    step.card.beside = ours.beside;
    step.agreedMembers = ours.content.members;
    step.writesRow = true;
    return step;
  }
  step.etag = step.card.etag;
  auto text = editedCard(agreedText(texts, ours.content.photo), bases.theirs, merged.forThem,
                         {rules_.revision});
  send(step, CardStep::There::Update, std::move(text), ours.content, ours.fingerprint, ours.beside);
  return step;
}

std::optional<CardStep> CardDecisions::goneThere(CardSides& sides) {
  CardStep step;
  step.card = std::move(sides.card);
  step.record = step.card.record;
  if (!sides.ours) {
    step.removesRow = true;
    return step;
  }
  const auto& ours = *sides.ours;
  step.name = nameOfContent(ours.content);
  const bool wasThere = step.card.intent != SyncCard::Intent::Create;
  step.isNoted = !wasThere;
  // A deletion that was sent and taken back here since, and a value that waits for the user, are
  // edits.
  const bool isChanged = step.card.intent != SyncCard::Intent::None || hasOpenConflict(step.card) ||
                         ours.fingerprint != step.card.fingerprint ||
                         ours.beside != step.card.beside;
  if (!isChanged || rules_.setsBack) {
    step.here = CardStep::Here::Delete;
    step.expected = ours.fingerprint;
    step.removesRow = true;
    return step;
  }
  const bool isRefused = !step.card.refused.empty() &&
                         step.card.refusedFingerprint == sumOf(ours.fingerprint, ours.beside);
  if (!rules_.pushes || isRefused) {
    if (!sides.isVacated) return std::nullopt;
    // The place is another card's now: no card stands for the record until it may be sent.
    step.removesRow = true;
    return step;
  }
  step.isSentAgain = wasThere;
  if (wasThere) step.note = step.name + " was deleted there and changed here, and is sent again";
  if (sides.isVacated) {
    step.formerPath = step.card.path;
    step.rowsInTheWay.push_back(step.card.id);
    step.card.id = 0;
    step.card.href = remote_.hrefFor(fileNameFor({}));
    step.card.path = remote_.pathOf(step.card.href);
    step.texts.emplace(SyncCard::Texts(), spill_);
    step.isNoted = false;
  }
  step.card.fingerprint = 0;
  step.card.intent = SyncCard::Intent::Create;
  step.card.etag.clear();
  step.writesRow = true;
  if (ours.content.isGroup) step.agreedMembers = ours.content.members;
  // Nothing in the whole book has it, and still it is taken.
  const bool isTaken = !wasThere && rules_.hasListedAll && !step.card.refused.empty() &&
                       step.card.refusedFingerprint == kTriedAgain;
  if (isTaken) step.newUid = uuidText(makeUuid());
  if (isTaken) step.card.uid = step.newUid;
  step.card.refused.clear();
  const auto uid = step.card.uid.empty() ? book_.uidOf(step.record) : step.card.uid;
  send(step, CardStep::There::Create, freshText(step.card.kind, ours.content, uid), ours.content,
       ours.fingerprint, ours.beside);
  return step;
}

// It is not fetched again before it is another one, and nothing is done to it.
CardStep CardDecisions::unreadable(CardSides& sides, std::string reason) {
  CardStep step;
  step.card = std::move(sides.card);
  step.record = step.card.record;
  step.name = sides.ours ? nameOfContent(sides.ours->content) : sides.theirs.href;
  step.card.href = sides.theirs.href;
  step.card.etag = sides.theirs.etag;
  step.card.refused = std::move(reason);
  step.card.refusedFingerprint = kUnreadable;
  step.isUnreadable = true;
  step.writesRow = true;
  return step;
}

std::optional<CardStep> CardDecisions::readThere(CardSides& sides) {
  const auto& theirs = *sides.read;
  const bool wasGroup = sides.card.kind == RecordKind::Group;
  if (sides.ours && wasGroup != theirs.content.isGroup) {
    return unreadable(sides,
                      wasGroup ? "the group has become a person" : "the person has become a group");
  }
  if (theirs.content.isGroup && book_.categoryGroups() != nullptr) {
    return unreadable(sides, "a group with a card of its own, where categories are groups");
  }
  if (!sides.ours && !rules_.setsBack &&
      (sides.card.intent == SyncCard::Intent::Create ||
       saysTheSameAsBefore(sides.card, theirs.content))) {
    return deletedHere(sides, nameOfContent(theirs.content));
  }
  return sides.ours ? brought(sides) : added(sides);
}

// Whether a card that was deleted here is what it was when both last agreed, whatever its ETag.
bool CardDecisions::saysTheSameAsBefore(const SyncCard& card, const CardContent& theirs) const {
  if (card.id == 0 || card.fingerprint == 0) return false;
  const auto texts = textsOf(card);
  const auto sent = sentTexts(texts);
  return isAgreedContent(texts, theirs) || (sent && isAgreedContent(*sent, theirs));
}

// There it is still what it was, or what this side has sent.
std::optional<CardStep> CardDecisions::deletedHere(CardSides& sides, const std::string& name) {
  if (!rules_.pushes) return std::nullopt;
  CardStep step;
  step.card = std::move(sides.card);
  step.name = name;
  step.removesRow = true;
  step.there = CardStep::There::Delete;
  step.card.href = sides.theirs.href;
  step.etag = sides.theirs.etag;
  return step;
}

CardStep CardDecisions::added(CardSides& sides) {
  auto& theirs = *sides.read;
  CardStep step;
  step.here = CardStep::Here::Add;
  step.card = std::move(sides.card);
  step.name = nameOfContent(theirs.content);
  if (step.card.fingerprint != 0) {
    if (!rules_.setsBack)
      step.note = step.name + " was deleted here and changed there, and is back";
    step.isBroughtBack = true;
  }
  const auto kind = theirs.content.isGroup ? RecordKind::Group : RecordKind::Person;
  step.record = RecordKey::make(kind);
  const auto properties = propertiesOfRecord(theirs.content);
  step.change.emplace();
  step.change->values = encodedValues(properties);
  step.change->bytes.emplace(std::exchange(step.change->values.bytes, {}), spill_);
  step.change->tags = theirs.content.categories;
  if (theirs.content.photo) step.change->photo.emplace(theirs.content.photo, spill_);
  step.texts.emplace(agreedTexts(withCrlf(sides.theirs.text), theirs.content), spill_);
  step.card.record = step.record;
  step.card.kind = kind;
  step.card.href = sides.theirs.href;
  step.card.etag = sides.theirs.etag;
  step.card.uid = theirs.uid;
  step.card.fingerprint = fingerprintOf(properties, theirs.content);
  step.card.beside = theirs.content.isGroup ? 0 : besideOfTags(theirs.content.categories);
  step.card.intent = SyncCard::Intent::None;
  step.card.refused.clear();
  step.writesRow = true;
  if (theirs.content.isGroup) step.members = theirs.content.members;
  step.agreedMembers = std::move(theirs.content.members);
  return step;
}

// Both sides are there: what was changed on either is brought to the other.
CardStep CardDecisions::brought(CardSides& sides) {
  const auto& theirs = *sides.read;
  const auto& ours = *sides.ours;
  CardStep step;
  step.card = sides.card;
  step.record = step.card.record;
  const auto texts = textsOf(step.card);
  auto bases = sides.isFirstMeeting ? Bases() : basesOf(sides, texts);
  // What this side has sent, and nobody has changed since, is agreed, though the answer was lost.
  const auto sent = sides.isFirstMeeting ? std::optional(texts) : sentTexts(texts);
  if (sent && !sent->text.empty()) {
    auto basesSent = basesOf(sides, *sent);
    if (sameContent(basesSent.theirs, theirs.content)) {
      bases = std::move(basesSent);
      sides.isFirstMeeting = false;
    }
  }
  const auto* theirBase = sides.isFirstMeeting ? nullptr : &bases.theirs;
  const auto* ourBase = sides.isFirstMeeting ? nullptr : &bases.ours;
  auto merged = merge(theirBase, theirs.content, ourBase, ours.content);
  const bool areTags = book_.categoryGroups() == nullptr;
  const bool isEdited = ours.content.isGroup || ours.fingerprint != step.card.fingerprint ||
                        (!areTags && ours.beside != step.card.beside);
  if (rules_.setsBack && isEdited) {
    auto tags = std::move(merged.content.categories);
    merged = MergedCard();
    merged.content = theirs.content;
    merged.changesOurs = true;
    if (areTags) merged.content.categories = std::move(tags);
    step.settlesConflicts = true;
  }
  // What is agreed when nothing is sent: the record without what was changed here.
  const auto pulled = sides.isFirstMeeting
                          ? theirs.content
                          : merge(theirBase, theirs.content, ourBase, bases.ours).content;
  step.name = nameOfContent(merged.content);
  step.conflicts = merged.conflicts;

  auto fingerprint = ours.fingerprint;
  auto beside = ours.beside;
  if (merged.changesOurs) {
    step.here = CardStep::Here::Change;
    step.expected = ours.fingerprint;
    step.change.emplace();
    step.change->properties = propertiesOfRecord(merged.content);
    step.change->keepsPhoto = sameData(merged.content.photo, ours.content.photo);
    if (!step.change->keepsPhoto && merged.content.photo) {
      step.change->photo.emplace(merged.content.photo, spill_);
    }
    step.change->tagsBefore = ours.content.categories;
    step.change->tags = merged.content.categories;
    fingerprint = fingerprintOf(step.change->properties, merged.content);
    if (!merged.content.isGroup) beside = besideOfTags(merged.content.categories);
  }
  if (merged.content.isGroup) {
    step.membersBefore = ours.linked;
    step.members = merged.content.members;
  }

  const bool isAgreed = !merged.changesTheirs;
  const auto& agreed = isAgreed ? merged.content : pulled;
  step.texts.emplace(agreedTexts(withCrlf(sides.theirs.text), agreed), spill_);
  step.agreedMembers = agreed.members;
  step.card.href = sides.theirs.href;
  step.card.etag = sides.theirs.etag;
  step.card.uid = theirs.uid;
  step.card.intent = SyncCard::Intent::None;
  step.card.refused.clear();
  step.card.keepsLess.clear();
  step.card.fingerprint =
      isAgreed ? fingerprint : fingerprintOf(propertiesOfRecord(pulled), pulled);
  step.card.beside = isAgreed || pulled.isGroup ? beside : besideOfTags(pulled.categories);
  step.writesRow = true;
  if (!isAgreed && rules_.pushes) {
    step.etag = step.card.etag;
    send(step, CardStep::There::Update,
         editedCard(withCrlf(sides.theirs.text), theirs.content, merged.forThem, {rules_.revision}),
         merged.content, fingerprint, beside);
  }
  return step;
}

CardStep CardDecisions::withdraw(CardSides sides) {
  CardStep step;
  step.name = nameOf(sides);
  step.card = std::move(sides.card);
  step.record = step.card.record;
  step.here = CardStep::Here::Delete;
  step.expected = sides.ours->fingerprint;
  step.removesRow = true;
  return step;
}

std::string CardDecisions::nameOf(const CardSides& sides) {
  if (sides.ours) return nameOfContent(sides.ours->content);
  return nameOfContent(agreedContent(sides.card, textsOf(sides.card), nullptr));
}

CardStep CardDecisions::create(const RecordKey& record, RecordKind kind, const LocalContent& ours,
                               std::string href, std::string path, std::string uid) {
  CardStep step;
  step.name = nameOfContent(ours.content);
  step.record = record;
  step.card.container = book_.container();
  step.card.record = record;
  step.card.kind = kind;
  step.card.href = std::move(href);
  step.card.path = std::move(path);
  step.card.uid = std::move(uid);
  step.card.intent = SyncCard::Intent::Create;
  step.writesRow = true;
  auto text = freshText(kind, ours.content, step.card.uid);
  // Kept from before it is sent, for whoever finds it there.
  step.texts.emplace(agreedTexts(text, ours.content), spill_);
  send(step, CardStep::There::Create, std::move(text), ours.content, ours.fingerprint, ours.beside);
  return step;
}

void CardDecisions::send(CardStep& step, CardStep::There how, std::string text,
                         const CardContent& here, std::uint64_t fingerprint, std::uint64_t beside) {
  step.there = how;
  if (rules_.mostBytes != 0 && text.size() > rules_.mostBytes) {
    Pushed refused;
    refused.outcome = Pushed::Outcome::TooLarge;
    refused.reason =
        "larger than the " + std::to_string(rules_.mostBytes) + " bytes that the server takes";
    step.pushed = std::move(refused);
  }
  const auto size = text.size();
  step.sent.emplace(SentCard{SpillableData(makeData(std::move(text)), spill_), size,
                             withoutPhoto(here), SpillableData(here.photo, spill_), fingerprint,
                             beside});
}

}  // namespace ox::sync
