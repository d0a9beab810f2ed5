#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "ox/platform/store/journal/change_reader.hpp"

namespace ox {

// What was done to one record, the newest first.
std::vector<JournalChange> historyOf(ChangeReader& reader, const RecordEntry& record,
                                     std::size_t atMost);
// The record as it was when that act had been written: what it is now, with every later change of
// it taken back.
PastRecordAnswer recordAfter(ChangeReader& reader, CommittedRecords& committed,
                             const RecordEntry& record, const ActRow& act);
// Records that are gone, the one that was removed last first.
std::vector<RemovedRecord> removedRecords(ChangeReader& reader, std::size_t atMost);
// The changes behind a place.
JournalPart partFrom(ChangeReader& reader, const JournalPlace& from, std::size_t atMost);

}  // namespace ox
