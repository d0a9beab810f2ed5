#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/base/record_key.hpp"
#include "ox/platform/store/values/journal_entries.hpp"
#include "ox/platform/store/values/store_moment.hpp"

// What was done to the contact store of this process, by whatever program, and the way back. Only
// what is committed counts. Safe from any thread; every operation throws StoreError when the store
// fails.

namespace ox::journal {

// Of the last commit.
OX_EXPORT StoreMoment moment();

// The commands that were given last, the newest first.
OX_EXPORT std::vector<JournalCommand> commands(std::size_t atMost);
// What was done to one record, its place in groups and its tags, the newest first; also of a record
// that is gone.
OX_EXPORT std::vector<JournalChange> historyOf(const RecordKey& record, std::size_t atMost);
// As it was at a time, in milliseconds since 1970.
OX_EXPORT PastRecordAnswer recordAt(const RecordKey& record, std::int64_t at);
// Records that are gone and can come back, the one that was removed last first.
OX_EXPORT std::vector<RemovedRecord> removedRecords(std::size_t atMost);

// Takes back one command, as one act: the one of that number, else the last that is in effect and
// takes nothing back itself. What was changed since by others stays and is named. What this process
// has not saved is left alone.
OX_EXPORT UndoReport undo(std::optional<std::int64_t> number = std::nullopt);
// Takes back the last undo that is in effect.
OX_EXPORT UndoReport redo();

// How much of the past is kept. Setting it forgets what is beyond at once.
OX_EXPORT JournalBounds bounds();
OX_EXPORT void setBounds(const JournalBounds& bounds);

// What was changed since a moment, in the order in which it was: read a part at a time, so that it
// takes the same memory however much that is. Records that were added and are gone again are only
// told as removed. Used by one thread at a time.
class OX_EXPORT ChangesSince {
 public:
  explicit ChangesSince(const StoreMoment& moment);
  // Goes on at a place where an earlier reader was.
  explicit ChangesSince(const JournalPlace& place);

  // Missing when there are no more, as yet: asked again it tells what was committed meanwhile.
  std::optional<JournalChange> next();
  // The journal does not reach back to that moment, or the store has another past: whoever follows
  // it must read the store as a whole, and go on from the moment() asked for before that.
  bool mustStartAnew() const { return startAnew_; }
  // Behind the last change that next() gave.
  const JournalPlace& place() const { return place_; }

 private:
  JournalPlace place_;
  JournalPlace readTo_;
  std::deque<JournalChange> read_;
  bool startAnew_ = false;
};

}  // namespace ox::journal
