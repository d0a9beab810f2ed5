#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/record_changes.hpp"
#include "ox/platform/store/values/save_request.hpp"

namespace ox {

// A request that must not be carried out as it stands. Nothing of it is written.
class RefusedRequest : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// What one write transaction does, row by row, and what the memory has to learn from it once it is
// committed. Lives while the write lock is held, inside of which nobody else commits: what it reads
// stays true to its end. Borrows the file and the records. Throws RefusedRequest where the request
// cannot be done, sqlite::Error where the file fails; whoever began the transaction rolls it back.
class StoreTransaction {
 public:
  using Entry = RecordEntry;

  StoreTransaction(StoreFile& file, CommittedRecords& committed, std::int64_t nextRow)
      : file_(file), committed_(committed), nextRow_(nextRow) {}
  StoreTransaction(const StoreTransaction&) = delete;
  StoreTransaction& operator=(const StoreTransaction&) = delete;

  void addContainer(const ContainerInfo& container);
  void removeContainer(const ContainerRemoval& removal);
  // Writes the new identifier into the record when its own is taken.
  void addRecord(NewRecord& record);
  void replaceRecord(const ReplacedRecord& record);
  // Merges the edit into the row as it is now. Empty when that is written, else why it was dropped.
  std::string applyEdit(const RecordEdit& edit);
  void removeRecord(const Entry& entry);
  // Empty when the link stands now, else why it cannot.
  std::string addLink(const Link& link);
  void removeLink(const Link& link);

  // Records that this transaction has added count too.
  std::optional<Entry> find(const RecordKey& key) const;
  // The row that the next record after this transaction will have.
  std::int64_t nextRow() const { return nextRow_; }
  const WrittenRecords& written() const { return written_; }

 private:
  bool closesCircleOfRows(std::int64_t group, std::int64_t child);
  void writeContent(Sql which, std::int64_t row, const PropertyBag& properties,
                    std::uint64_t fingerprint);
  void writeImage(std::int64_t row, const Data& image);
  std::uint64_t pictureChecksum(std::int64_t row);

  StoreFile& file_;
  CommittedRecords& committed_;
  std::int64_t nextRow_;
  WrittenRecords written_;
  std::unordered_map<RecordKey, Entry> addedByKey_;
  std::unordered_map<RecordKey, RecordKey> renamed_;  // copies, from the identifier of their source
};

// Of a record that is to be added: its picture, wherever it lies, and its fingerprint as its sender
// worked it out or worked out now.
Data pictureOf(const NewRecord& record);
std::uint64_t fingerprintOf(const NewRecord& record, const Data& picture);

}  // namespace ox
