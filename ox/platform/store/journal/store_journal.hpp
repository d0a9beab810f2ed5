#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

#include "ox/base/record_key.hpp"
#include "ox/platform/store/committed/contact_store.hpp"
#include "ox/platform/store/values/journal_entries.hpp"

namespace ox {

// What was done to one store, and the way back. Reads and writes what is committed; the unsaved
// changes of this process are none of its business. Borrows the store and the lock that guards it.
// Safe from any thread; every operation throws StoreError when the store fails.
class StoreJournal {
 public:
  StoreJournal(std::mutex& mutex, ContactStore& store) : mutex_(mutex), store_(store) {}
  StoreJournal(const StoreJournal&) = delete;
  StoreJournal& operator=(const StoreJournal&) = delete;

  // Those with the latest acts, the newest first.
  std::vector<JournalCommand> commands(std::size_t atMost);
  // What was done to a record, its links and tags, also to one that is gone; the newest first.
  std::vector<JournalChange> historyOf(const RecordKey& key, std::size_t atMost);
  // As it was at that time, in milliseconds since 1970.
  PastRecordAnswer recordAt(const RecordKey& key, std::int64_t at);
  // Records that are gone, the newest first.
  std::vector<RemovedRecord> removedRecords(std::size_t atMost);
  StoreMoment moment();
  // The next changes from a place on.
  JournalPart read(const JournalPlace& from, std::size_t atMost);

  // Takes back the command of that number (of its first act); without one the last that is in
  // effect and takes nothing back itself. `again`: the last taking back that is in effect.
  enum class Last : std::uint8_t { Command, TakingBack };
  // Makes the store hold what the copy of it at that path holds, and the tags change so, as one
  // act.
  UndoReport returnToCopy(const std::string& path, const std::vector<TagChange>& tags);

  JournalBounds bounds();
  void setBounds(const JournalBounds& bounds);
  // See eraseRecord.
  bool erase(const RecordKey& key, const std::string& name, std::int64_t followedTags);

  UndoReport takeBack(std::optional<std::int64_t> number, Last last);

 private:
  template <typename Step>
  auto guarded(Step step) -> decltype(step());
  template <typename Step>
  auto reading(Step step) -> decltype(step());

  std::mutex& mutex_;
  ContactStore& store_;
};

}  // namespace ox
