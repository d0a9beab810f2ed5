#include "ox/platform/store/journal/store_journal.hpp"

#include <deque>
#include <exception>
#include <filesystem>
#include <system_error>
#include <unordered_set>
#include <utility>

#include "ox/platform/store/committed/act_builder.hpp"
#include "ox/platform/store/journal/command_list.hpp"
#include "ox/platform/store/journal/record_history.hpp"
#include "ox/platform/store/journal/return_to_copy.hpp"
#include "ox/platform/store/journal/way_back.hpp"
#include "ox/platform/store/process_origin.hpp"
#include "ox/platform/store/schema/backup.hpp"
#include "ox/platform/store/search/person_search.hpp"
#include "ox/platform/store/upkeep/eraser.hpp"
#include "ox/platform/store/upkeep/repair.hpp"
#include "ox/platform/store/values/store_error.hpp"
#include "ox/platform/store/writing/journal_trim.hpp"
#include "ox/records/damaged_bytes.hpp"

namespace ox {
namespace {

constexpr std::int64_t kActsOfTrim = 1024;

// A copy, opened for reading under another name: one of an earlier version is brought up to date by
// that, one that lacks an index gets it, and the copy is to stay as it is.
class OpenedCopy {
 public:
  explicit OpenedCopy(const std::string& path) : copy_(path + ".opened") {
    copy_.takeStore(path);
    makeMissingIndexes(copy_.path());
    file_.emplace(copy_.path());
  }
  OpenedCopy(const OpenedCopy&) = delete;
  OpenedCopy& operator=(const OpenedCopy&) = delete;
  ~OpenedCopy() {
    file_.reset();
    try {
      for (const auto* ending : {"-wal", "-shm", "-journal", ".copies"}) {
        std::filesystem::remove_all(copy_.path() + ending);
      }
    } catch (const std::exception&) {
      // What is left goes with the next sweep of the copies.
    }
  }

  StoreFile& file() { return *file_; }

 private:
  DatabaseCopy copy_;
  std::optional<StoreFile> file_;
};

class Pin {
 public:
  explicit Pin(ContactStore& store) : store_(store) { store_.pinMoment(); }
  Pin(const Pin&) = delete;
  Pin& operator=(const Pin&) = delete;
  ~Pin() { store_.unpinMoment(); }

 private:
  ContactStore& store_;
};

// How many records an act touches.
std::uint64_t recordsOf(const Act& act) {
  std::unordered_set<RecordKey> records;
  for (const auto& record : act.restored) records.insert(record.record.key);
  for (const auto& record : act.added) records.insert(record.key);
  for (const auto& record : act.changed) records.insert(record.record.key);
  for (const auto& record : act.removed) records.insert(record.key);
  for (const auto& link : act.addedLinks) records.insert(link.group.key);
  for (const auto& link : act.removedLinks) records.insert(link.group.key);
  for (const auto& tags : act.tags) records.insert(RecordKey::of(tags.person));
  return records.size();
}

std::string numbered(std::int64_t number) {
  return "command " + std::to_string(number);
}

// There is no such command.
class UnknownCommand : public RefusedRequest {
 public:
  using RefusedRequest::RefusedRequest;
};

// Which command is to be taken back: its first act. Throws RefusedRequest.
JournalAct wanted(ChangeReader& reader, std::optional<std::int64_t> number,
                  StoreJournal::Last last) {
  const TakenBack takenBack(reader.journal());
  if (!number) {
    number = last == StoreJournal::Last::Command ? lastCommand(reader) : takenBack.lastUndo();
    if (!number) throw UnknownCommand("there is nothing to take back");
  }
  const auto act = reader.journal().act(*number);
  if (!act || isOfNobody(reader.journal(), *act)) {
    throw UnknownCommand("the journal has no " + numbered(*number));
  }
  if (const auto command = reader.commandOf(*act); command != *number) {
    throw RefusedRequest(std::to_string(*number) + " is a part of " + numbered(command));
  }
  if (takenBack.isFinal(*number)) {
    throw RefusedRequest(numbered(*number) + " cannot be taken back");
  }
  if (const auto by = takenBack.by(*number)) {
    throw RefusedRequest(numbered(*number) + " was taken back by " + numbered(*by));
  }
  return *act;
}

}  // namespace

template <typename Step>
auto StoreJournal::guarded(Step step) -> decltype(step()) {
  const std::lock_guard lock(mutex_);
  const auto& path = store_.address().file();
  try {
    return store_.file().guarded(step);
  } catch (const DamagedBytes& error) {
    throw StoreError(StoreError::Kind::Corrupt, path + ": the journal: " + error.what(), path);
  }
}

// What is read in several questions is of one moment.
template <typename Step>
auto StoreJournal::reading(Step step) -> decltype(step()) {
  return guarded([&] {
    const Pin pin(store_);
    store_.refresh(CommittedRecords::Look::Now);
    return step();
  });
}

std::vector<JournalCommand> StoreJournal::commands(std::size_t atMost) {
  return reading([&] {
    ChangeReader reader(store_.file(), store_.committed());
    return latestCommands(reader, atMost);
  });
}

std::vector<JournalChange> StoreJournal::historyOf(const RecordKey& key, std::size_t atMost) {
  return reading([&] {
    ChangeReader reader(store_.file(), store_.committed());
    const auto record = reader.record(key);
    return record ? ox::historyOf(reader, *record, atMost) : std::vector<JournalChange>();
  });
}

PastRecordAnswer StoreJournal::recordAt(const RecordKey& key, std::int64_t at) {
  return reading([&] {
    ChangeReader reader(store_.file(), store_.committed());
    const auto act = reader.journal().actAt(at);
    if (!act) return PastRecordAnswer();
    const auto record = reader.record(key);
    if (!record) return PastRecordAnswer{PastRecordAnswer::Was::NotThere, {}};
    return recordAfter(reader, store_.committed(), *record, *act);
  });
}

std::vector<RemovedRecord> StoreJournal::removedRecords(std::size_t atMost) {
  return reading([&] {
    ChangeReader reader(store_.file(), store_.committed());
    return ox::removedRecords(reader, atMost);
  });
}

UndoReport StoreJournal::returnToCopy(const std::string& path, const std::vector<TagChange>& tags) {
  return guarded([&] {
    UndoReport report;
    OpenedCopy copy(path);
    std::deque<NewRecord> added;
    report.done = store_.write(StoreFile::Outlive::PowerCut, [&](ActBuilder& builder) {
      added.clear();
      auto& act = builder.act();
      ReturnToCopy(store_.file(), copy.file(), store_.committed(), act, added).decide();
      act.tags = tags;
      act.bringsFromElsewhere = true;
      report.records = recordsOf(act);
    });
    if (report.done) report.number = store_.writtenMoment().number;
    report.done = true;  // a store that holds all of it already, too
    return report;
  });
}

JournalBounds StoreJournal::bounds() {
  return reading([&] { return journalBounds(store_.file().connection()); });
}

void StoreJournal::setBounds(const JournalBounds& bounds) {
  guarded([&] {
    store_.leaveMoment();
    auto& file = store_.file().connection();
    for (bool isFirst = true, more = true; more; isFirst = false) {
      sqlite::Transaction transaction(file);
      if (isFirst) setJournalBounds(file, bounds);
      more = trimJournal(file, kActsOfTrim);
      transaction.commit();
    }
    removeOutdatedIndex(store_.file());
  });
}

bool StoreJournal::erase(const RecordKey& key, const std::string& name, std::int64_t followedTags) {
  const std::lock_guard lock(mutex_);
  store_.leaveMoment();
  return eraseRecord(store_.address().file(), key, name, followedTags);
}

StoreMoment StoreJournal::moment() {
  return reading([&] { return store_.committed().moment(); });
}

JournalPart StoreJournal::read(const JournalPlace& from, std::size_t atMost) {
  return reading([&] {
    ChangeReader reader(store_.file(), store_.committed());
    return partFrom(reader, from, atMost);
  });
}

UndoReport StoreJournal::takeBack(std::optional<std::int64_t> number, Last last) {
  return guarded([&] {
    UndoReport report;
    try {
      report.done = store_.write(StoreFile::Outlive::PowerCut, [&](ActBuilder& builder) {
        ChangeReader reader(store_.file(), store_.committed());
        const auto first = wanted(reader, number, last);
        report.command = first.row.moment.number;
        report.origin = reader.journal().origin(first.origin).origin;
        auto& act = builder.act();
        act.origin = processOrigin();
        act.origin->together = false;
        act.origin->undoes = report.command;
        WayBack way(store_.file(), store_.committed(), act);
        way.decide(actsOfCommand(reader.journal(), first));
        report.stays = way.stays();
        report.records = recordsOf(act);
      });
      if (report.done) report.number = store_.writtenMoment().number;
    } catch (const RefusedRequest& refused) {
      report.reason = refused.what();
      report.isUnknown = dynamic_cast<const UnknownCommand*>(&refused) != nullptr;
    }
    return report;
  });
}

}  // namespace ox
