#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_set>

#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/act.hpp"

namespace ox {

// Of a row of number, name, next_record, next_change, bytes.
ActRow actOfRow(const sqlite::Statement& row);
// The journal's last row; missing in a damaged store.
std::optional<ActRow> lastAct(StoreFile& file);

// Writes an act into an open write transaction, with its rows of the journal; whoever began the
// transaction commits it or rolls it back. Borrows the file. Throws sqlite::Error where that fails.
class ActWriter {
 public:
  // Throws StoreError when the journal has lost its last row.
  ActWriter(StoreFile& file, const Act& act);
  ActWriter(const ActWriter&) = delete;
  ActWriter& operator=(const ActWriter&) = delete;

  enum class Outcome : std::uint8_t {
    Written,
    WrittenBefore,    // an act of that name stands in the journal
    Outdated,         // a guard does not hold: to be decided again
    IdentifierTaken,  // an addition's identifier is another record's: see taken()
  };
  enum class Others : std::uint8_t { HaveCommitted, WereStill };  // since it was decided
  // Nothing must be committed unless it is written.
  Outcome write(Others others);
  const WrittenAct& written() const { return written_; }
  // Whether it is time to see if the journal has outgrown its bounds: now and then, so that it
  // costs a commit next to nothing.
  bool isTrimDue() const;
  const std::unordered_set<RecordKey>& taken() const { return taken_; }

 private:
  bool isWrittenBefore();
  bool guardsHold();
  bool touchesGuarded(const sqlite::Statement& change) const;
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
  void writeActRow();

  void insertRecord(const RecordEntry& record);
  void insertContent(std::int64_t row, const PropertyBag& properties, std::uint64_t fingerprint,
                     const Data& image);
  std::int64_t insertImage(const std::string& bytes);
  void noteLink(ChangeKind what, std::int64_t container, std::int64_t parent, std::int64_t child,
                std::int64_t number);
  sqlite::Statement& change(ChangeKind what, std::int64_t record, std::int64_t container);

  StoreFile& file_;
  const Act& act_;
  ActRow last_;  // before this act
  std::int64_t nextRow_ = 0;
  std::int64_t nextChange_ = 0;
  std::int64_t bytes_ = 0;
  std::vector<std::int32_t> newContainers_;
  std::unordered_set<RecordKey> taken_;
  WrittenAct written_;
};

}  // namespace ox
