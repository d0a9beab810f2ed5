#include "ox/platform/store/committed/contact_store.hpp"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "ox/platform/store/committed/act_builder.hpp"
#include "ox/platform/store/file/stored_rows.hpp"
#include "ox/platform/store/search/person_search.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/platform/store/writing/act_writer.hpp"
#include "ox/platform/store/writing/journal_trim.hpp"
#include "ox/records/card_uid.hpp"

namespace ox {

namespace {

constexpr int kTriesWithoutLock = 3;
// With the lock nobody else changes what is decided upon: whatever is in the way then is seen the
// next time, if it is sound. Each thing that can be in the way may be met once.
constexpr int kMostTries = kTriesWithoutLock + 8;
// More than come between two times that it is due.
constexpr std::int64_t kActsOfTrim = 256;

// How long a writer waits for others altogether, however often it has to decide again.
class WaitingTime {
 public:
  explicit WaitingTime(sqlite::Connection& file) : file_(file) {}
  WaitingTime(const WaitingTime&) = delete;
  WaitingTime& operator=(const WaitingTime&) = delete;
  ~WaitingTime() {
    if (shortened_) file_.setBusyTimeout(kBusyMilliseconds);
  }

  void startNextTry() {
    const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start_);
    file_.setBusyTimeout(std::max(1, kBusyMilliseconds - static_cast<int>(waited.count())));
    shortened_ = true;
  }

 private:
  sqlite::Connection& file_;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  bool shortened_ = false;
};

}  // namespace

void ContactStore::refresh(CommittedRecords::Look look) {
  if (pins_ == 0) return committed_.refresh(look);
  // SQLite ends a transaction by itself when it cannot read.
  if (snapshot_ && file_.connection().isInTransaction()) return;
  snapshot_.reset();
  try {
    file_.guarded([&] { snapshot_.emplace(file_.connection()); });
    committed_.refresh(CommittedRecords::Look::Now);
  } catch (...) {
    snapshot_.reset();
    throw;
  }
}

void ContactStore::unpinMoment() {
  assert(pins_ > 0);
  if (--pins_ == 0) leaveMoment();
}

void ContactStore::letGo() {
  if (pins_ > 0) return;
  file_.close();
  committed_.lookAgain();
}

void ContactStore::checkpoint() {
  leaveMoment();
  file_.checkpoint();
}

bool ContactStore::write(StoreFile::Outlive outlive, const Decision& decide) {
  leaveMoment();
  return file_.guarded([&] {
    file_.letCommits(outlive);
    WaitingTime waiting(file_.connection());
    const auto name = makeUuid();
    std::unordered_set<RecordKey> taken;
    for (int tries = 0;; ++tries) {
      if (tries > 0) waiting.startNextTry();
      const auto lock = tries < kTriesWithoutLock ? Lock::WhenDecided : Lock::First;
      if (const auto written = tryWriting(lock, name, decide, taken)) return *written;
      if (tries >= kMostTries) {
        throw DamagedRow("what is stored is not what can be seen of it, so nothing can be decided");
      }
    }
  });
}

std::optional<bool> ContactStore::tryWriting(Lock lock, const Uuid& name, const Decision& decide,
                                             std::unordered_set<RecordKey>& taken) {
  std::optional<sqlite::Transaction> transaction;
  if (lock == Lock::First) transaction.emplace(file_.connection());
  committed_.refresh(CommittedRecords::Look::Now);
  ActBuilder builder(file_, committed_, taken);
  decide(builder);
  auto act = builder.take();
  if (const auto refusal = readOnly_.refusalOf(act); !refusal.empty()) {
    throw RefusedRequest(refusal);
  }
  act.name = name;
  act.followedTags = followedTags_;
  // For an act of nothing too: whoever asks for it learns whether the store can be written.
  if (!transaction) transaction.emplace(file_.connection());
  if (act.empty()) return false;
  if (!commitAct(act, taken, *transaction)) return std::nullopt;
  return true;
}

// False when it has to be decided again; the transaction is then rolled back by its owner.
bool ContactStore::commitAct(const Act& act, std::unordered_set<RecordKey>& taken,
                             sqlite::Transaction& transaction) {
  // The rows of a run that brings a book in step come in their order, and gain nothing by it.
  if (act.sync.records.empty()) file_.keepPagesFor(act.countOfRecords());
  try {
    ActWriter writer(file_, act, committed_.lastActUnlessOutdated());
    switch (writer.write()) {
      case ActWriter::Outcome::Written:
        break;
      case ActWriter::Outcome::WrittenBefore:
        return true;
      case ActWriter::Outcome::Outdated:
        return false;
      case ActWriter::Outcome::IdentifierTaken:
        taken.insert(writer.taken().begin(), writer.taken().end());
        file_.forgetUncommitted();
        return false;
    }
    const bool trims = writer.isTrimDue() && mayTrimJournal(file_);
    if (trims) trimJournal(file_.connection(), kActsOfTrim);
    const auto commit = finish(transaction, act);
    followedTags_.reset();
    writtenMoment_ = writer.written().row.moment;
    file_.noteCommit(writtenMoment_, commit);
    committed_.follow(writer.written());
    if (trims) removeOutdatedIndex(file_);
    return true;
  } catch (const PropertyOfTwoTypes&) {
    // Whoever decides again sees the type that another process has given it.
    file_.forgetUncommitted();
    return false;
  } catch (...) {
    file_.forgetUncommitted();
    throw;
  }
}

// A commit that fails may have been made: the act bears a name, by which it is found. Where it was
// not, what it has written into the log is written over.
StoreFile::Commit ContactStore::finish(sqlite::Transaction& transaction, const Act& act) {
  try {
    transaction.commit();
    return StoreFile::Commit::Done;
  } catch (const sqlite::Error&) {
    if (file_.isWritten(act.decidedAt, act.name)) return StoreFile::Commit::Found;
    file_.coverFailedCommit();
    throw;
  }
}

bool ContactStore::owesTags() {
  return file_.guarded([&] {
    auto& numbers = file_.statement(Sql::TagDebts);
    const sqlite::StatementScope scope(numbers);
    return numbers.step();
  });
}

TagDebts ContactStore::tagDebts() {
  return file_.guarded([&] {
    TagDebts debts;
    {
      auto& numbers = file_.statement(Sql::TagDebts);
      const sqlite::StatementScope scope(numbers);
      while (numbers.step()) {
        requireSound(numbers, 2, "the row of a tag debt");
        debts.acts.push_back({numbers.integer(0), std::string(numbers.blob(1)), {}});
      }
    }
    const auto name = nameOfStore(file_);
    if (name.size() == debts.store.size()) std::ranges::copy(name, debts.store.begin());
    if (debts.acts.empty()) return debts;
    auto& changes = file_.statement(Sql::TagChangesOfAct);
    for (auto& act : debts.acts) {
      const sqlite::StatementScope scope(changes);
      changes.bind(1, act.number);
      while (changes.step()) {
        requireSound(changes, 2, "a change of tags in the journal");
        try {
          act.changes.push_back(decodeTagChange(changes.blob(0), changes.blob(1)));
        } catch (const DamagedTagChange& error) {
          throw StoreError(StoreError::Kind::Corrupt, file_.address().name() + ": " + error.what(),
                           file_.address().name());
        }
      }
    }
    return debts;
  });
}

namespace {

// Who is left out has no tags either.
std::vector<TagChange> tagsOfWritten(const SaveRequest& request) {
  auto tags = request.tags;
  if (tags.empty()) return tags;
  std::unordered_set<std::string> leftOut;
  for (const auto& record : request.additions) {
    if (record.leftOut) leftOut.insert(record.key.text());
  }
  for (const auto& record : request.replacements) {
    if (record.leftOut) leftOut.insert(record.key.text());
  }
  std::erase_if(tags, [&](const TagChange& change) { return leftOut.contains(change.person); });
  return tags;
}

std::vector<ActBuilder::Expected> expectedBy(const SaveRequest& request) {
  std::vector<ActBuilder::Expected> expected;
  for (const auto& each : request.replacements) {
    if (each.expected) expected.push_back({each.key, *each.expected});
  }
  for (const auto& each : request.removals) {
    if (each.expected) expected.push_back({each.key, *each.expected});
  }
  return expected;
}

}  // namespace

bool ContactStore::execute(SaveRequest& request) {
  std::vector<RecordKey> keys;
  bool written = false;
  request.outdatedRecords.clear();
  const auto refuseOutdated = [&request](std::vector<RecordKey> outdated) {
    if (outdated.empty()) return;
    request.outdatedRecords = std::move(outdated);
    throw RefusedRequest("contacts were changed meanwhile");
  };
  try {
    using enum StoreFile::Outlive;
    written = write(request.outlivesPowerCut ? PowerCut : Kill, [&](ActBuilder& builder) {
      builder.act().bringsFromElsewhere = request.bringsFromElsewhere;
      settleOutdated(request);
      if (request.moment) {
        for (const auto& record : request.additions) builder.guardContainer(record.container);
      }
      refuseOutdated(builder.outdatedOf(expectedBy(request)));
      meet(request);
      const bool leavesOut = request.whenOutdated == SaveRequest::WhenOutdated::LeaveOut;
      for (const auto& container : request.newContainers) builder.addContainer(container);
      keys.clear();
      for (const auto& record : request.additions) {
        keys.push_back(record.leftOut ? record.key : builder.addRecord(record));
      }
      for (auto& record : request.replacements) {
        record.leftOut = leavesOut && !builder.find(record.key);
        if (!record.leftOut) builder.replaceRecord(record);
      }
      for (const auto& link : request.removedLinks) builder.removeLink(link);
      // Before the links, which may go where a group is now that is removed.
      for (auto& removal : request.removals) {
        const auto entry = builder.find(removal.key);
        removal.leftOut = !entry;
        if (entry) builder.removeRecord(*entry);
      }
      for (auto& link : request.links) {
        const auto refused = builder.addLink({link.group, link.child});
        if (!refused.empty() && !leavesOut) throw RefusedRequest(refused);
        link.leftOut = !refused.empty();
      }
      for (const auto& removal : request.removedContainers) builder.removeContainer(removal);
      builder.changeTags(tagsOfWritten(request));
      refuseOutdated(builder.noteSync(request.sync));
    });
  } catch (const RefusedRequest& refused) {
    request.reason = refused.what();
    return false;
  }
  for (std::size_t i = 0; i < keys.size(); ++i) request.additions[i].key = keys[i];
  if (request.moment) request.moment = written ? writtenMoment_ : committed_.moment();
  return true;
}

// Whatever the decision is going to ask for one by one.
void ContactStore::meet(const RecordChanges& changes) {
  std::vector<RecordKey> edited;
  std::vector<RecordKey> others = changes.removals;
  for (const auto& edit : changes.edits) edited.push_back(edit.key);
  for (const auto* links : {&changes.removedLinks, &changes.addedLinks}) {
    for (const auto& link : *links) {
      others.push_back(link.group);
      others.push_back(link.child);
    }
  }
  committed_.meetContents(edited);
  committed_.meet(others);
}

void ContactStore::meet(const SaveRequest& request) {
  std::vector<RecordKey> replaced;
  for (const auto& record : request.replacements) replaced.push_back(record.key);
  std::vector<RecordKey> removed;
  for (const auto& record : request.removals) removed.push_back(record.key);
  committed_.meetContents(replaced);
  committed_.meet(removed);
}

SaveReport ContactStore::commit(RecordChanges& changes) {
  SaveReport report;
  std::vector<RecordKey> keys;
  std::vector<ActBuilder::MergedValue> merged;
  const auto noteDropped = [&report](std::string why, const RecordKey& record,
                                     FailureKind kind = FailureKind::Refused) {
    if (why.empty()) return false;
    report.dropped.push_back({kind, std::move(why), record.text()});
    return true;
  };
  // What has become read-only since the change was made must not keep every other one from being
  // saved.
  const auto isReadOnly = [&](const ActBuilder& builder, const RecordKey& key) {
    const auto entry = builder.find(key);
    return entry && noteDropped(readOnly_.refusalOf(entry->container), key, FailureKind::Denied);
  };
  try {
    write(StoreFile::Outlive::PowerCut, [&](ActBuilder& builder) {
      report.dropped.clear();
      keys.clear();
      meet(changes);
      for (const auto& record : changes.additions) keys.push_back(builder.addRecord(record));
      for (const auto& edit : changes.edits) {
        if (!isReadOnly(builder, edit.key)) noteDropped(builder.applyEdit(edit), edit.key);
      }
      report.overtaken = builder.wonOver();
      merged = builder.merged();
      for (const auto& link : changes.removedLinks) {
        if (!isReadOnly(builder, link.group)) builder.removeLink(link);
      }
      // Before the links, which may go where a group is now that is removed.
      for (const auto& key : changes.removals) {
        const auto entry = builder.find(key);
        if (entry && !isReadOnly(builder, key)) builder.removeRecord(*entry);
      }
      for (const auto& link : changes.addedLinks) {
        if (!isReadOnly(builder, link.group)) noteDropped(builder.addLink(link), link.group);
      }
      builder.changeTags(changes.tags);
    });
  } catch (const RefusedRequest& refused) {
    return {false, {FailureKind::Refused, refused.what(), {}}, {}, {}};
  }
  for (std::size_t i = 0; i < keys.size(); ++i) changes.additions[i].key = keys[i];
  noteKnown(changes, merged);
  // When every edit was dropped nothing was committed, and creations before it may still wait.
  sync();
  report.done = true;
  return report;
}

// Whoever goes on changing a value without reading it again sets out from what was written, also
// where the changes of others were merged into that.
void ContactStore::noteKnown(const RecordChanges& changes,
                             const std::vector<ActBuilder::MergedValue>& merged) noexcept {
  auto& known = committed_.known();
  try {
    if (!known.empty()) {
      for (const auto& edit : changes.edits) {
        for (const auto& value : edit.values) known.noteRead(edit.key, value.property);
      }
    }
    for (const auto& value : merged) known.keepWritten(value.record, value.property, value.mine);
  } catch (...) {
    known.clear();  // the save is done, whatever can be remembered of it
  }
}

// A request that was made from what the store held is matched once more against what it holds now,
// if others have committed between both. Nothing is looked at when the moment is still the same, so
// an import that is alone pays one comparison a request; and as nothing may come into the container
// while this is decided and written, no two imports that run at once add one card twice.
void ContactStore::settleOutdated(SaveRequest& request) {
  request.outdated = request.moment && *request.moment != committed_.moment();
  for (auto& record : request.additions) record.leftOut = false;
  if (!request.outdated) return;
  if (request.whenOutdated == SaveRequest::WhenOutdated::Refuse) {
    throw RefusedRequest("the store was changed meanwhile");
  }
  // Before anything is added: what one request adds is not compared with itself.
  const std::span additions(request.additions);
  for (std::size_t first = 0, next = 0; first < additions.size(); first = next) {
    while (next < additions.size() && additions[next].kind == additions[first].kind &&
           additions[next].container == additions[first].container) {
      ++next;
    }
    leaveOutStored(additions.subspan(first, next - first));
  }
}

// Of one kind in one container.
void ContactStore::leaveOutStored(std::span<NewRecord> additions) {
  std::vector<SoughtRecord> sought;
  std::vector<NewRecord*> records;
  for (auto& record : additions) {
    const auto uid = cardUidOf(record);
    const bool hasUid = uid && !uidKey(*uid).empty();
    if (!hasUid && record.kind != RecordKind::Person) continue;
    sought.push_back(hasUid ? SoughtRecord{*uid}
                            : SoughtRecord{{}, fingerprintOf(record, pictureOf(record))});
    records.push_back(&record);
  }
  if (sought.empty()) return;
  const auto& any = additions.front();
  const auto found = committed_.matches(any.container, any.kind, sought);
  for (std::size_t i = 0; i < records.size(); ++i) records[i]->leftOut = !found[i].empty();
}

}  // namespace ox
