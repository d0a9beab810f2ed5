#include "ox/sync/run/steps/run_commit.hpp"

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"
#include "ox/OxAddressBookSDK/tags/tag_store.hpp"
#include "ox/OxMacAddressBookSDK/ground/tag_acts.hpp"
#include "ox/base/checksum.hpp"
#include "ox/base/clock.hpp"
#include "ox/base/text/joined.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/records/fingerprint.hpp"
#include "ox/sync/cards/card_edit.hpp"
#include "ox/sync/cards/parts/text_sets.hpp"
#include "ox/sync/run/look/agreed.hpp"
#include "ox/sync/run/steps/card_decisions.hpp"
#include "ox/transfer/person_tags.hpp"

namespace ox::sync {
namespace {

constexpr int kTries = 4;
constexpr int kBadRequest = 400;

}  // namespace

void RunCommit::settleSent() {
  for (auto& step : steps_) {
    if (step.there != CardStep::There::Nothing) settle(step);
    if (step.isUnreadable)
      report_.refused.push_back({step.name, step.card.href, 0, step.card.refused});
    if (!step.note.empty()) report_.notes.push_back(step.note);
  }
}

void RunCommit::settle(CardStep& step) {
  using enum Pushed::Outcome;
  const bool deletes = step.there == CardStep::There::Delete;
  if (!step.pushed) {
    // The book failed before it was told. What was about to be created stays noted.
    if (deletes) step.removesRow = false;
    return;
  }
  auto& pushed = *step.pushed;
  switch (pushed.outcome) {
    case Done:
      if (!deletes) settleDone(step);
      return;
    case Gone:
      if (deletes) return;
      needsAnotherRun_ = true;
      return;
    case ReadOnly:
      isBookReadOnly_ = true;
      refuse(step, "the book takes no changes", pushed.code);
      return;
    case Refused:
      refuse(step, pushed.reason, pushed.code);
      // Some servers say no more of a UID that is another card's.
      if (step.there == CardStep::There::Create && pushed.code == kBadRequest) lookForUid(step);
      return;
    case TooLarge:
      refuse(step, pushed.reason, pushed.code);
      return;
    case UidElsewhere:
      refuse(step, "its UID is that of another card there", pushed.code);
      lookForUid(step);
      return;
    case Locked:
    case Unknown:
      report_.notes.push_back(
          step.name + ": " +
          (pushed.reason.empty() ? "nobody knows whether it has arrived" : pushed.reason) +
          "; the next run looks");
      [[fallthrough]];
    case Changed:
    case Exists:
      if (pushed.outcome != Locked) needsAnotherRun_ = true;
      if (deletes) step.removesRow = false;
      if (pushed.outcome == Changed) askAgain(step);
      return;
  }
}

// A tag that is the same there does not tell that nothing was changed.
void RunCommit::askAgain(CardStep& step) {
  if (step.there == CardStep::There::Delete) step.card.intent = SyncCard::Intent::Delete;
  step.card.etag.clear();
  step.writesRow = true;
}

// The next look lists everything: the card may stand at another place of this book. Under a UID of
// its own it is refused for good.
void RunCommit::lookForUid(CardStep& step) {
  if (!step.newUid.empty()) return;
  step.card.refusedFingerprint = kTriedAgain;
  needsAnotherRun_ = true;
}

void RunCommit::refuse(CardStep& step, const std::string& reason, int code) {
  report_.refused.push_back({step.name, step.card.href, code, reason});
  step.card.refused = reason;
  if (step.there == CardStep::There::Delete) {
    step.removesRow = false;
    step.writesRow = true;
    step.card.intent = SyncCard::Intent::None;
    step.card.refusedFingerprint = kDeletionRefused;
    return;
  }
  step.card.refusedFingerprint = sumOf(step.sent->fingerprint, step.sent->beside);
  step.writesRow = true;
}

// What stands there now is the base of the next run, and what the record says, whatever the other
// side has made of it. Where somebody was faster there than the look back, it is what was sent, and
// the next run sees their change.
void RunCommit::settleDone(CardStep& step) {
  const auto& pushed = *step.pushed;
  const auto& sent = *step.sent;
  auto here = contentOf(sent);
  auto& card = step.card;
  card.href = pushed.href.empty() ? card.href : pushed.href;
  card.path = remote_.pathOf(card.href);
  card.intent = SyncCard::Intent::None;
  card.refused.clear();
  card.fingerprint = sent.fingerprint;
  card.beside = sent.beside;
  step.agreedMembers = here.members;
  step.writesRow = true;
  if (!step.newUid.empty()) takeNewUid(step, here);
  const bool isOurs = step.readBack && step.readBack->state == FetchedCard::State::Read &&
                      (pushed.etag.empty() || pushed.etag == step.readBack->etag);
  const auto text = isOurs ? step.textReadBack->get() : Data();
  const auto kept = isOurs ? readWholeCard(*text) : std::variant<ReadCard, std::string>();
  const auto* keptCard = isOurs ? std::get_if<ReadCard>(&kept) : nullptr;
  card.etag = keptCard != nullptr ? step.readBack->etag : pushed.etag;
  step.texts.emplace(agreedTexts(keptCard != nullptr ? withCrlf(*text) : *sent.text.get(), here),
                     spill_);
  if (keptCard == nullptr) {
    // What nobody can read there is fetched, and told, by the next look.
    if (isOurs) card.etag.clear();
    needsAnotherRun_ = needsAnotherRun_ || step.readBack;
    return;
  }
  if (!keptCard->uid.empty()) card.uid = keptCard->uid;
  const auto given = readCard(*sent.text.get());
  const auto* givenCard = std::get_if<ReadCard>(&given);
  if (givenCard == nullptr) return;
  const auto less = joined(differingProperties(givenCard->content, keptCard->content), ", ");
  if (!less.empty() && less != card.keepsLess) {
    report_.notes.push_back(step.name + ": the server keeps less or other: " + less);
  }
  card.keepsLess = less;
}

// The record says then what its card says.
void RunCommit::takeNewUid(CardStep& step, CardContent& here) {
  step.here = CardStep::Here::Change;
  step.expected = step.sent->fingerprint;
  step.change.emplace();
  here.properties.set(property_id::kCardUid, Object(step.newUid));
  step.change->properties = propertiesOfRecord(here);
  step.change->keepsPhoto = true;
  step.change->tagsBefore = here.categories;
  step.change->tags = here.categories;
  step.card.fingerprint =
      contentFingerprint(step.change->properties, here.photo ? checksum64(*here.photo) : 0);
  report_.notes.push_back(
      step.name + ": another card of that server has its UID, so it was sent under a new one");
}

SaveRequest RunCommit::requestOf(const SyncRows& rows) {
  SaveRequest request;
  request.whenOutdated = SaveRequest::WhenOutdated::LeaveOut;
  request.outlivesPowerCut = true;
  request.bringsFromElsewhere = true;
  request.sync = rows;
  newLinks_.clear();
  for (const auto& step : steps_) {
    if (step.here == CardStep::Here::Add && !step.isPutOff)
      local_.noteAddition(step.card.uid, {step.record, step.card.kind});
  }
  const auto isAddition = [](const CardStep& step) { return step.here == CardStep::Here::Add; };
  request.additions.reserve(static_cast<std::size_t>(std::ranges::count_if(steps_, isAddition)));
  request.sync.cards.reserve(steps_.size());
  bool changesMembers = false;
  for (const auto& step : steps_) {
    if (step.isPutOff || step.here != CardStep::Here::Delete) continue;
    local_.noteRemoval(local_.uidOf(step.record));
    changesMembers = true;
  }
  for (auto& step : steps_) {
    if (step.isPutOff) continue;
    changesMembers = changesMembers || step.here == CardStep::Here::Add;
    addRecordChanges(step, request);
    if (step.members || step.card.kind == RecordKind::Group) linkMembers(step, request);
    for (const auto row : step.rowsInTheWay) request.sync.removedCards.push_back(row);
    if (step.removesRow) {
      if (step.card.id != 0) request.sync.removedCards.push_back(step.card.id);
    } else if (step.writesRow) {
      request.sync.cards.push_back(changeOf(step.card, step));
    }
    for (const auto& conflict : step.conflicts) {
      request.sync.conflicts.push_back({0, step.card.container, step.card.path, conflict.property,
                                        conflict.theirs, conflict.ours, conflict.base,
                                        millisecondsNow()});
    }
  }
  if (const auto* groups = local_.categoryGroups()) linkCategories(*groups, request);
  if (changesMembers) relinkOthers(request);
  addSettledConflicts(request);
  addMovedConflicts(request);
  return request;
}

void RunCommit::addRecordChanges(CardStep& step, SaveRequest& request) {
  switch (step.here) {
    case CardStep::Here::Nothing:
      return;
    case CardStep::Here::Add: {
      NewRecord record;
      record.key = step.record;
      record.kind = step.card.kind;
      record.container = local_.container();
      record.encoded = step.change->values;
      record.readBytes = [bytes = *step.change->bytes] { return bytes.get(); };
      record.fingerprint = step.card.fingerprint;
      record.spilledImage = step.change->photo;
      request.additions.push_back(std::move(record));
      return;
    }
    case CardStep::Here::Change: {
      ReplacedRecord record;
      record.key = step.record;
      record.properties = step.change->properties;
      record.keepsImage = step.change->keepsPhoto;
      record.spilledImage = step.change->photo;
      record.expected = step.expected;
      request.replacements.push_back(std::move(record));
      return;
    }
    case CardStep::Here::Delete:
      request.removals.push_back({step.record, step.expected});
      return;
  }
}

void RunCommit::linkCategories(const CategoryGroups& groups, SaveRequest& request) {
  CategoryLinks links(groups, local_.container(), request);
  for (const auto& step : steps_) {
    if (step.isPutOff) continue;
    if (step.here == CardStep::Here::Delete) links.leaveAll(step.record);
    if (!step.change) continue;
    const auto& before = step.change->tagsBefore;
    const auto& now = step.change->tags;
    for (const auto& category : textsWithout(now, before, Case::Counts)) {
      links.enter(step.record, category);
    }
    for (const auto& category : textsWithout(before, now, Case::Counts)) {
      links.leave(step.record, category);
    }
  }
  links.removeLeft();
}

// The group gets the records that its members are and loses those that they are not. What no record
// can stand for is noted as said by the card alone.
void RunCommit::linkMembers(CardStep& step, SaveRequest& request) {
  const auto unlinkedOf = [&](const std::vector<std::string>& members) {
    local_.meetMembers(members);
    std::vector<std::string> unlinked;
    for (const auto& member : members) {
      if (!canBeLinked(step.record, local_.memberOfUid(member))) unlinked.push_back(member);
    }
    return unlinked;
  };
  if (step.members) {
    const auto unlinked = unlinkedOf(*step.members);
    const std::unordered_set<std::string> out(unlinked.begin(), unlinked.end());
    std::vector<RecordKey> wanted;
    for (const auto& member : *step.members) {
      if (!out.contains(member)) wanted.push_back(local_.memberOfUid(member).key);
    }
    // What was linked or unlinked here since the plan stays so.
    std::unordered_set<RecordKey> before;
    for (const auto& member : step.membersBefore) {
      const auto child = local_.memberOfUid(member);
      if (!child.key.isNone()) before.insert(child.key);
    }
    std::unordered_set<RecordKey> after;
    for (const auto& child : wanted) {
      if (!after.insert(child).second || before.contains(child)) continue;
      request.links.push_back({step.record, child});
      newLinks_.emplace_back(step.record, child);
    }
    for (const auto& child : before) {
      if (!after.contains(child)) request.removedLinks.push_back({step.record, child});
    }
    if (!unlinked.empty() && step.here == CardStep::Here::Add) {
      for (const auto& member : unlinked) {
        if (!local_.memberOfUid(member).key.isNone()) {
          tellOnce(step.name + " would lie in itself; that member is not shown");
        }
      }
    }
  }
  if (!step.texts) return;
  const auto unlinked = unlinkedOf(step.agreedMembers);
  step.texts->setMembers(packedMembers(step.agreedMembers, unlinked));
  const std::unordered_set<std::string> out(unlinked.begin(), unlinked.end());
  std::vector<std::string> linked;
  for (const auto& member : step.agreedMembers) {
    if (!out.contains(member)) linked.push_back(member);
  }
  step.card.beside = besideOfMembers(std::move(linked));
}

// A request may be put together more than once.
void RunCommit::tellOnce(std::string note) {
  auto& notes = report_.notes;
  if (std::ranges::find(notes, note) == notes.end()) notes.push_back(std::move(note));
}

bool RunCommit::canBeLinked(const RecordKey& group, const LocalBook::Member& member) const {
  if (member.key.isNone()) return false;
  return member.kind == RecordKind::Person || !wouldLieInItself(group, member.key);
}

bool RunCommit::wouldLieInItself(const RecordKey& group, const RecordKey& child) const {
  std::vector<RecordKey> below{child};
  std::unordered_set<RecordKey> met;
  while (!below.empty()) {
    const auto next = below.back();
    below.pop_back();
    if (next == group) return true;
    if (!met.insert(next).second) continue;
    if (const auto groups = containerSource().committedChildren(next, RecordKind::Group)) {
      below.insert(below.end(), groups->begin(), groups->end());
    }
    for (const auto& [parent, added] : newLinks_) {
      if (parent == next) below.push_back(added);
    }
  }
  return false;
}

void RunCommit::addSettledConflicts(SaveRequest& request) {
  std::unordered_set<std::string> paths;
  for (const auto& step : steps_) {
    if (step.settlesConflicts && !step.isPutOff) paths.insert(step.card.path);
  }
  if (paths.empty()) return;
  for (const auto& conflict : syncSource().syncConflicts()) {
    if (conflict.container == local_.container() && paths.contains(conflict.path)) {
      request.sync.removedConflicts.push_back(conflict.id);
    }
  }
}

// A conflict is that of a card at a place.
void RunCommit::addMovedConflicts(SaveRequest& request) {
  std::vector<SyncConflict> open;
  for (const auto& step : steps_) {
    if (step.isPutOff || step.formerPath.empty() || step.removesRow) continue;
    if (open.empty()) open = syncSource().syncConflicts();
    for (auto conflict : open) {
      if (conflict.container != step.card.container || conflict.path != step.formerPath) continue;
      conflict.id = 0;
      conflict.path = step.card.path;
      request.sync.conflicts.push_back(std::move(conflict));
    }
  }
}

// Groups whose cards name somebody who has come only now, or whom the other side has deleted: that
// she is a member is said there still.
void RunCommit::relinkOthers(SaveRequest& request) {
  std::unordered_set<std::int64_t> inSteps;
  for (const auto& step : steps_) inSteps.insert(step.card.id);
  for (const auto& now : syncSource().syncCardsOfGroups(local_.container())) {
    if (!now.now || inSteps.contains(now.card.id)) continue;
    const std::array ids{now.card.id};
    auto texts = syncSource().syncCardTexts(ids);
    if (texts.empty()) continue;
    const auto waiting = unlinkedMembers(texts.front());
    CardStep step;
    step.card = now.card;
    step.record = now.card.record;
    step.agreedMembers = agreedContent(now.card, texts.front(), nullptr).members;
    const auto isThere = [&](const auto& member) {
      return !local_.memberOfUid(member).key.isNone();
    };
    const auto linked = step.agreedMembers.size() - waiting.size();
    const auto there = static_cast<std::size_t>(std::ranges::count_if(step.agreedMembers, isThere));
    if (std::ranges::none_of(waiting, isThere) && linked == there) continue;
    step.texts.emplace(std::move(texts.front()), spill_);
    for (const auto& member : waiting) {
      const auto child = local_.memberOfUid(member);
      if (!canBeLinked(step.record, child)) continue;
      request.links.push_back({step.record, child.key});
      newLinks_.emplace_back(step.record, child.key);
    }
    linkMembers(step, request);
    request.sync.cards.push_back(changeOf(step.card, step));
  }
}

void RunCommit::write(SyncRows rows, const SyncBook& kept) {
  for (int tries = 1;; ++tries) {
    auto request = requestOf(rows);
    RecordKeys going;
    for (const auto& removal : request.removals) going.push_back(removal.key);
    const TagHold hold;
    const auto manager = vcard::tagManagerOf(local_.container());
    for (const auto& step : steps_) {
      const bool isSame = !step.change || step.change->tags == step.change->tagsBefore;
      if (step.isPutOff || isSame || local_.categoryGroups() != nullptr) continue;
      TagStore::shared().change(
          manager, step.record.text(),
          textsWithout(step.change->tagsBefore, step.change->tags, Case::Counts),
          textsWithout(step.change->tags, step.change->tagsBefore, Case::Counts));
    }
    bool tagsAreSafe = false;
    if (executeWithTags(request, going, tagsAreSafe)) return;
    if (request.outdatedRecords.empty() || tries == kTries) {
      throw StoreError(StoreError::Kind::Refused, request.reason, {});
    }
    const std::unordered_set<RecordKey> outdated(request.outdatedRecords.begin(),
                                                 request.outdatedRecords.end());
    for (auto& step : steps_) {
      if (outdated.contains(step.record)) step.isPutOff = true;
    }
    needsAnotherRun_ = true;
    rows.books.front().book.token = kept.token;
    rows.books.front().book.sent = kept.sent;
  }
}

}  // namespace ox::sync
