#pragma once

#include <cstdint>

#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/journal_entries.hpp"

namespace ox {

// What was set of the bounds of the journal, else what they are without.
JournalBounds journalBounds(sqlite::Connection& file);
void setJournalBounds(sqlite::Connection& file, const JournalBounds& bounds);

// Whether anything may be beyond the bounds: one cheap question. False for certain alone.
bool mayTrimJournal(StoreFile& file);
// Takes the oldest acts out of the journal that are beyond its bounds, at most so many, with their
// pictures; never one of the last command, nor one that the tag file has not followed yet. To be
// called inside of a write transaction. True when there may be more.
bool trimJournal(sqlite::Connection& file, std::int64_t atMostActs);

}  // namespace ox
