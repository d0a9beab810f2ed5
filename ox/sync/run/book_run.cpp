#include "ox/sync/run/book_run.hpp"

#include <algorithm>
#include <array>
#include <ctime>
#include <unordered_map>
#include <utility>

#include "ox/base/clock.hpp"
#include "ox/base/text/joined.hpp"
#include "ox/platform/store/contact_source.hpp"
#include "ox/records/card_uid.hpp"
#include "ox/sync/cards/card_edit.hpp"
#include "ox/sync/remote/remote_error.hpp"
#include "ox/sync/run/run_rows.hpp"
#include "ox/sync/run/steps/card_pushes.hpp"
#include "ox/sync/run/steps/guard.hpp"
#include "ox/sync/run/steps/plan_report.hpp"
#include "ox/sync/run/steps/run_commit.hpp"

namespace ox::sync {
namespace {

// Deletions get lost: what nobody told is found by listing everything once in a week.
constexpr std::int64_t kWholeEvery = std::int64_t{7} * 24 * 60 * 60 * 1000;
// An idle run writes nothing, but for the time of the last success now and then.
constexpr std::int64_t kNoteSuccessEvery = std::int64_t{60} * 60 * 1000;
constexpr std::int64_t kNoteWholeEvery = 24 * kNoteSuccessEvery;

// A listing since a token names again what this side has sent since; so many are no reason to list
// anything once more.
constexpr std::size_t kStaleEntries = 20;

// How often a book is looked at, where somebody else was faster.
constexpr int kRuns = 3;

constexpr const char* kOnly30 = "3.0";
constexpr const char* kOnly40 = "4.0";

std::string revisionOf(std::int64_t milliseconds) {
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  std::tm parts{};
  ::gmtime_r(&seconds, &parts);
  std::array<char, sizeof "20261231T235959Z"> text{};
  std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ", &parts);
  return text.data();
}

const std::string& hrefSent(const CardStep& step) {
  return step.there == CardStep::There::Delete ? step.card.href : step.pushed->href;
}

bool hasArrived(const CardStep& step) {
  return step.pushed && step.pushed->outcome == Pushed::Outcome::Done;
}

// As the row of a book keeps them.
std::string hrefsSent(const CardSteps& steps) {
  std::string hrefs;
  for (const auto& step : steps) {
    if (hasArrived(step)) hrefs += hrefSent(step) + '\n';
  }
  return hrefs;
}

}  // namespace

BookRun::BookRun(RemoteBook& remote, SyncBook book, const SyncOptions& options, BookReport& report)
    : remote_(remote),
      book_(std::move(book)),
      options_(options),
      report_(report),
      local_(LocalBook::of(book_)),
      decisions_(local_, remote_, spill_, rules_),
      start_(millisecondsNow()) {
  rules_.revision = revisionOf(start_);
}

void BookRun::tell(SyncProgress::Step step, std::size_t done, std::size_t all) const {
  if (options_.hooks.isStopped && options_.hooks.isStopped()) {
    throw RemoteError(RemoteFailure::Stopped, "stopped");
  }
  if (options_.progress) options_.progress({step, report_.account, done, all});
}

bool BookRun::isDue(std::int64_t now) const {
  return now - book_.lastWhole > kWholeEvery || now < book_.lastWhole;
}

bool BookRun::run(const Start& start) {
  steps_.clear();
  tell(SyncProgress::Step::Listing, 0, 0);
  BookLook look(local_, remote_);
  look.lookHere();
  if (start.isSameThere && book_.sent.empty() && look.foundNothingHere() && !start.listsAll &&
      !isDue(start_)) {
    return commit({}, book_.token, start, true);
  }
  // What it was able to do, or allowed, may have changed.
  if (options_.listsAll || isDue(start_)) learnFacts();
  rules_.pushes = options_.pushes && !book_.isReadOnly();
  rules_.setsBack = options_.setsBack && book_.isReadOnly();
  if (book_.isReadOnly() && !rules_.setsBack) tellKept(look.changesHere());
  rules_.mostBytes = book_.mostBytes;
  rules_.version = book_.versions == kOnly40 ? vcard::CardVersion::V40 : vcard::CardVersion::V30;
  rules_.writesGroupsAs4 = book_.groupSpelling == kOnly40;

  const bool isAnew = start.listsAll || isDue(start_);
  look.lookThere(book_.token, book_.sent, isAnew ? BookLook::Ask::Everything : BookLook::Ask::News,
                 rules_.setsBack ? BookLook::ChangesHere::Fetched : BookLook::ChangesHere::Known);
  if (const auto* groups = local_.categoryGroups()) tellLonelyGroups(*groups);
  rules_.hasListedAll = look.listing().isWhole;
  plan(look);
  if (!mayGoOn(look)) return false;

  noteIntents(steps_);
  auto failure = sendSteps(steps_, remote_, spill_, [&](std::size_t done, std::size_t all) {
    tell(SyncProgress::Step::Sending, done, all);
  });
  const auto token =
      failure ? look.listing().token : tokenAfterSending(look.listing(), start.isOneOfSeveral);
  if (options_.progress) options_.progress({SyncProgress::Step::Writing, report_.account, 0, 0});
  if (failure) report_.failure = failure->what();
  const bool again = commit(look.listing(), token, start, options_.pulls);
  if (failure) throw RemoteError(*failure);
  return again;
}

void BookRun::learnFacts() {
  const auto known = book_;
  const auto facts = remote_.facts();
  book_.name = facts.name;
  if (book_.readOnly != SyncBook::ReadOnly::AsAsked) {
    book_.readOnly = facts.isReadOnly ? SyncBook::ReadOnly::AsItSays : SyncBook::ReadOnly::No;
  }
  book_.mostBytes = facts.mostBytes;
  book_.versions = facts.wantsVersion4 ? kOnly40 : std::string();
  hasLearned_ = book_ != known;
}

// A listing from before names again what was sent since. Where that matters the book is listed once
// more, and from now on from there, if nothing but what was sent is new.
std::string BookRun::tokenAfterSending(const Listing& listing, bool isOneOfSeveral) {
  std::unordered_map<std::string, std::string> etags;  // by path; of what was deleted empty
  for (const auto& step : steps_) {
    if (!hasArrived(step)) continue;
    const bool isDeleted = step.there == CardStep::There::Delete;
    etags.emplace(remote_.pathOf(hrefSent(step)),
                  isDeleted || !step.readBack ? std::string() : step.readBack->etag);
  }
  const bool isWorthIt = isOneOfSeveral ? !etags.empty() : etags.size() > kStaleEntries;
  if (!isWorthIt || listing.token.empty()) return listing.token;
  try {
    const auto since = remote_.list(listing.token);
    const bool isOurs = !since.isWhole &&
                        std::ranges::all_of(since.cards,
                                            [&](const ListedCard& card) {
                                              const auto own =
                                                  etags.find(remote_.pathOf(card.href));
                                              return own != etags.end() && own->second == card.etag;
                                            }) &&
                        std::ranges::all_of(since.gone, [&](const std::string& href) {
                          const auto own = etags.find(remote_.pathOf(href));
                          return own != etags.end() && own->second.empty();
                        });
    return isOurs ? since.token : listing.token;
  } catch (const RemoteError&) {
    return listing.token;  // the next run lists from there
  }
}

void BookRun::plan(BookLook& look) {
  look.giveFetched(
      [&](CardSides sides) { take(std::move(sides)); },
      [&](std::size_t done, std::size_t all) { tell(SyncProgress::Step::Fetching, done, all); });
  look.giveOthers([&](CardSides sides) { take(std::move(sides)); }, broughtBack_);
  if (book_.isReadOnly()) {
    keepNew(look);
  } else {
    createNew(look);
  }
}

void BookRun::take(CardSides sides) {
  const bool isNews = sides.there != CardSides::There::Same;
  const bool wasSent = sides.card.intent == SyncCard::Intent::Create;
  if (isNews && !options_.pulls && !wasSent) return;
  noteGroupSpelling(sides);
  auto step = decisions_.decide(std::move(sides));
  if (!step) return;
  if (step->there == CardStep::There::Delete && isOnItsWay(step->card)) {
    isPostponed_ = true;
    return;
  }
  if (step->isBroughtBack) broughtBack_.insert(std::string(uidKey(step->card.uid)));
  steps_.push_back(std::move(*step));
}

// New groups are written as those that are there.
void BookRun::noteGroupSpelling(const CardSides& sides) {
  if (!sides.read || !sides.read->content.isGroup || !book_.groupSpelling.empty()) return;
  book_.groupSpelling = sides.read->version == vcard::CardVersion::V40 ? kOnly40 : kOnly30;
  rules_.writesGroupsAs4 = book_.groupSpelling == kOnly40;
}

// Who was moved into another book goes there first, and only then from here.
bool BookRun::isOnItsWay(const SyncCard& card) {
  if (uidKey(card.uid).empty()) return false;
  for (const auto& other : syncSource().syncBooks()) {
    if (other.container == book_.container || other.isReadOnly()) continue;
    const std::array sought{SoughtRecord{card.uid}};
    const auto found = containerSource().matches(other.container, card.kind, sought);
    if (found.front().empty()) continue;
    const auto [waiting, isNew] = waiting_.try_emplace(other.container);
    auto& keys = waiting->second;
    if (isNew) {
      for (const auto& record : syncSource().recordsWithoutCard(other.container)) {
        keys.insert(record.key);
      }
      for (const auto& now : syncSource().changedSyncCards(other.container)) {
        if (now.card.intent == SyncCard::Intent::Create) keys.insert(now.card.record);
      }
    }
    const bool isWaiting = std::ranges::any_of(
        found.front(), [&](const FoundRecord& record) { return keys.contains(record.key); });
    if (isWaiting) return true;
  }
  return false;
}

void BookRun::createNew(const BookLook& look) {
  if (!rules_.pushes) return;
  const auto records = look.newHere();
  std::vector<std::string> uids;
  std::vector<std::string> paths;
  for (const auto& record : records) {
    uids.push_back(local_.uidAsWritten(record.key));
    paths.push_back(remote_.pathOf(remote_.hrefFor(fileNameFor(uidKey(uids.back())))));
  }
  const auto known = syncSource().syncCardsAt(book_.container, paths);
  std::unordered_set<std::string> taken;
  for (const auto& step : steps_) taken.insert(step.card.path);
  for (std::size_t i = 0; i < records.size(); ++i) {
    const auto ours = local_.contentOf(records[i].key, records[i].kind);
    if (!ours) continue;
    const bool isFree = known[i].card.id == 0 && taken.insert(paths[i]).second;
    const auto href = remote_.hrefFor(fileNameFor(isFree ? uidKey(uids[i]) : std::string_view()));
    steps_.push_back(decisions_.create(records[i].key, records[i].kind, *ours, href,
                                       remote_.pathOf(href), uids[i]));
  }
}

// Of a book that takes no changes.
void BookRun::keepNew(const BookLook& look) {
  std::vector<CardSides> added;
  for (const auto& record : look.newHere()) {
    CardSides sides;
    sides.card.container = book_.container;
    sides.card.record = record.key;
    sides.card.kind = record.kind;
    sides.ours = local_.contentOf(record.key, record.kind);
    if (sides.ours) added.push_back(std::move(sides));
  }
  if (!rules_.setsBack) return tellKept(added);
  for (auto& sides : added) steps_.push_back(decisions_.withdraw(std::move(sides)));
}

void BookRun::tellKept(const std::vector<CardSides>& changed) {
  for (const auto& sides : changed) {
    const bool isNew = sides.card.fingerprint == 0;
    const char* const what = !sides.ours ? "deleted" : isNew ? "new" : "changed";
    report_.refused.push_back({decisions_.nameOf(sides), sides.card.href, 0,
                               std::string(what) + " here, and the book takes no changes"});
  }
  report_.kept += changed.size();
}

void BookRun::tellLonelyGroups(const CategoryGroups& groups) {
  if (groups.withoutMembers().empty()) return;
  auto note = "groups without members are here alone, since the book says them as categories: " +
              joined(groups.withoutMembers(), ", ");
  if (std::ranges::find(report_.notes, note) == report_.notes.end()) {
    report_.notes.push_back(std::move(note));
  }
}

void BookRun::tellNewConflicts() {
  for (const auto& step : steps_) {
    for (const auto& conflict : step.conflicts) {
      report_.newConflicts.push_back({step.name, conflict.property,
                                      textOfValue(conflict.property, conflict.theirs),
                                      textOfValue(conflict.property, conflict.ours)});
    }
  }
}

// Tells why a run ends after its plan.
bool BookRun::mayGoOn(BookLook& look) {
  using State = BookReport::State;
  tellNewConflicts();
  const auto tellPlan = [&](State state) {
    report_.state = state;
    const auto here = plannedHere(steps_);
    const auto there = plannedThere(steps_);
    report_.down = here;
    report_.up = there;
  };
  if (const auto why = guarded(look)) {
    tellPlan(State::Guarded);
    report_.failure = *why;
    report_.plan = plannedDeletions(steps_);
    return false;
  }
  if (options_.isDryRun) {
    tellPlan(State::Planned);
    report_.plan = plannedChanges(steps_);
    for (const auto& step : steps_) {
      if (!step.note.empty()) report_.notes.push_back(step.note);
    }
    return false;
  }
  if (look.isFirstMeeting()) {
    BookReport plan = report_;
    plan.down = plannedHere(steps_);
    plan.up = plannedThere(steps_);
    plan.plan = plannedChanges(steps_);
    if (!options_.confirm || !options_.confirm(plan)) {
      tellPlan(State::NeedsConfirmation);
      report_.failure = "both sides hold contacts and have not met before";
      report_.plan = std::move(plan.plan);
      return false;
    }
  }
  return true;
}

std::optional<std::string> BookRun::guarded(BookLook& look) const {
  const auto known = look.knownCards();
  if (options_.allowsDeletions) return std::nullopt;
  const auto here = plannedHere(steps_).deleted;
  const auto there = plannedThere(steps_).deleted;
  const auto told = [&](std::size_t count, const char* where) {
    return "it would delete " + std::to_string(count) + " of " + std::to_string(known) +
           " contacts " + where;
  };
  if (here > 0 && look.isSuddenlyEmpty()) return "the book is empty there; " + told(here, "here");
  if (isTooMuch({here, known})) return told(here, "here");
  const bool isInDoubt = std::ranges::any_of(steps_, [&](const CardStep& step) {
    return step.here == CardStep::Here::Delete && look.isDoubtful(step.card.path);
  });
  if (here > 0 && book_.state == SyncBook::State::Copied) {
    return "the store is a copy that no run has brought in step since; " + told(here, "here");
  }
  if (isInDoubt) {
    return told(here, "here") +
           " that are not there any more, though nothing there says that they " +
           "were deleted: it may have been put back to an old copy";
  }
  if (isTooMuch({there, known})) return told(there, "there");
  return std::nullopt;
}

// Without what earlier looks of the same report have come to.
KnownRun BookRun::thisRun(std::int64_t end) const {
  BookReport counted;
  countDone(steps_, counted);
  KnownRun run;
  run.start = start_;
  run.end = end;
  run.down = counted.down;
  run.up = counted.up;
  for (const auto& step : steps_) run.conflicts += step.conflicts.size();
  run.refused = report_.refused.size();
  run.failure = report_.failure;
  return run;
}

bool BookRun::commit(const Listing& listing, const std::string& token, const Start& start,
                     bool isComplete) {
  const auto sent = hrefsSent(steps_);
  RunCommit commit(local_, remote_, steps_, spill_, report_);
  commit.settleSent();
  auto kept = book_;
  kept.sent += sent;
  bool isWorthWriting = !steps_.empty() || hasLearned_ || book_.state != SyncBook::State::Active;
  book_.state = SyncBook::State::Active;
  if (commit.isBookReadOnly() && !book_.isReadOnly()) {
    book_.readOnly = SyncBook::ReadOnly::AsItSays;
  }
  const auto now = millisecondsNow();
  book_.sent = kept.sent;
  if (isComplete) {
    const bool isBehind =
        start.isOneOfSeveral || listing.isWhole || listing.cards.size() > kStaleEntries;
    isWorthWriting = isWorthWriting || (token != book_.token && (book_.token.empty() || isBehind));
    book_.token = token;
    // A token that was asked for after the sending is past it, and without one all is listed.
    book_.sent = token == listing.token && !token.empty() ? sent : std::string();
    if (listing.isWhole) {
      isWorthWriting = isWorthWriting || now - book_.lastWhole > kNoteWholeEvery;
      book_.lastWhole = start_;
    }
  }
  const bool isOld = now - book_.lastSuccess > kNoteSuccessEvery;
  isWorthWriting = isWorthWriting || isOld || !lastFailureOf(book_).empty();
  if (isWorthWriting) {
    if (start.abilities) book_.reports = start.abilities();
    if (report_.failure.empty()) book_.lastSuccess = now;
    SyncRows rows;
    rows.books.push_back({book_, {}});
    if (!steps_.empty()) {
      rows.runs.push_back(rowOfRun(book_.container, thisRun(now)));
    }
    commit.write(std::move(rows), kept);
    countDone(steps_, report_);
  }
  return commit.needsAnotherRun();
}

bool runBook(RemoteBook& remote, SyncBook book, const SyncOptions& options, BookRun::Start start,
             BookReport& report) {
  for (int runs = 1;; ++runs) {
    BookRun run(remote, book, options, report);
    const bool again = run.run(start);
    if (!again || report.state != BookReport::State::InStep) return run.isPostponed();
    if (runs == kRuns) {
      if (report.refused.empty()) {
        report.notes.emplace_back("not everything could be settled; the next run goes on");
      }
      return run.isPostponed();
    }
    for (auto& row : syncSource().syncBooks()) {
      if (row.container == book.container) book = std::move(row);
    }
    // What the next look settles is no refusal.
    report.refused.clear();
    report.kept = 0;
    start.isSameThere = false;
    start.listsAll = true;
  }
}

}  // namespace ox::sync
