#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <utility>

#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/platform/store/file/stored_rows.hpp"
#include "ox/platform/store/values/journal_entries.hpp"

namespace ox {

// Tells rows of the journal in the terms of records and accounts. Borrows the file and the records.
// Used by one thread at a time; throws sqlite::Error and DamagedBytes.
class ChangeReader {
 public:
  ChangeReader(StoreFile& file, CommittedRecords& committed);

  JournalRows& journal() { return journal_; }
  StoredRows& stored() { return stored_; }

  // What a row tells; of a row of links, what it tells of that one.
  JournalChange change(const JournalRow& row, const JournalAct& act);
  JournalChange change(const JournalRow& row, const JournalAct& act, const NumberedLink& link);
  JournalChange addition(const RecordEntry& record, const JournalAct& act);
  // The act that a change or an added record belongs to; missing when it is not kept any more.
  std::optional<JournalAct> actOfChange(std::int64_t id);
  std::optional<JournalAct> actOfRecord(std::int64_t row);
  // The number of the command that an act belongs to.
  std::int64_t commandOf(const JournalAct& act);
  // Of a record that is there, or was removed within the journal.
  std::optional<RecordEntry> record(std::int64_t row);
  std::optional<RecordEntry> record(const RecordKey& key);
  // For whoever asks for changes from that one on alone: the removal of a record that is gone is
  // told behind all that is told of it, so what is before need not be read.
  void beginAt(std::int64_t change) { removedReadTo_ = change; }

 private:
  JournalChange begin(const JournalAct& act);
  void describe(const JournalRow& row, JournalChange& change);
  void readRemovedUntil(const std::function<bool()>& isFound);
  template <typename IsBefore>
  std::optional<JournalAct> firstAct(IsBefore isBefore);

  CommittedRecords& committed_;
  JournalRows journal_;
  StoredRows stored_;
  std::int64_t removedReadTo_ = 0;                         // the removals behind are not read yet
  std::unordered_map<std::int64_t, RecordEntry> removed_;  // records that are gone, by row
  std::unordered_map<RecordKey, std::int64_t> removedRows_;
};

}  // namespace ox
