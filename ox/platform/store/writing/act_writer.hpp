#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "ox/platform/store/file/journal_rows.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/act.hpp"
#include "ox/platform/store/writing/journal_writer.hpp"
#include "ox/platform/store/writing/link_writer.hpp"
#include "ox/platform/store/writing/record_writer.hpp"
#include "ox/platform/store/writing/sync_writer.hpp"

namespace ox {

// Writes an act into an open write transaction, with its rows of the journal; whoever began the
// transaction commits it or rolls it back. Borrows the file. Throws sqlite::Error where that fails.
class ActWriter {
 public:
  // The last act is the one that was the last when this one was decided; missing where others may
  // have committed since. Throws StoreError when the journal has lost its last row.
  ActWriter(StoreFile& file, const Act& act, const std::optional<ActRow>& last);
  ActWriter(const ActWriter&) = delete;
  ActWriter& operator=(const ActWriter&) = delete;

  enum class Outcome : std::uint8_t {
    Written,
    WrittenBefore,    // an act of that name stands in the journal
    Outdated,         // a guard does not hold: to be decided again
    IdentifierTaken,  // an addition's identifier is another record's: see taken()
  };
  // Nothing must be committed unless it is written.
  Outcome write();
  const WrittenAct& written() const { return written_; }
  // Whether it is time to see if the journal has outgrown its bounds: now and then, so that it
  // costs a commit next to nothing.
  bool isTrimDue() const;
  const std::unordered_set<RecordKey>& taken() const { return taken_; }

 private:
  bool isWrittenBefore();
  bool guardsHold();
  bool touchesGuarded(const JournalRow& change) const;
  std::int64_t rowOf(std::int64_t decided) const;
  std::int32_t containerOf(std::int32_t decided) const;
  void addContainers();
  void restoreRecords();
  void addRecords();
  void changeRecords();
  void removeLinks();
  void addLinks();
  void removeRecords();
  void removeContainers();
  void noteTags();
  void noteSync();

  void noteContainer(ChangeKind what, std::int32_t row, const ContainerInfo& info);
  bool insertRecord(const RecordEntry& record);
  void insertContent(std::int64_t row, const Act::AddedRecord& added);
  std::optional<RecordWriter::Picture> insertPicture(const Data& picture);
  void changeRecord(const Act::ChangedRecord& changed);
  void noteLink(const Act::ChangedLink& link);
  void noteRemoval(const RecordEntry& record, const sqlite::Statement& row);
  std::optional<std::int64_t> rowOfPerson(const std::string& identifier);

  StoreFile& file_;
  const Act& act_;
  const bool isDecidedUpon_;  // the last act; else the guards tell
  ActRow last_;               // before this act
  std::int64_t nextRow_;
  RecordWriter records_;
  JournalWriter journal_;
  LinkWriter links_;
  std::vector<std::int32_t> newContainers_;
  std::unordered_set<RecordKey> taken_;
  WrittenAct written_;
};

}  // namespace ox
