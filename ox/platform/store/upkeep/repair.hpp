#pragma once

#include <set>
#include <string>
#include <vector>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/upkeep/repair_report.hpp"
#include "ox/platform/store/values/record_entry.hpp"

namespace ox {

// Mends what is wrong with the store at that path and follows from what is whole: its indexes, what
// a record is found by, links to nowhere. All of it is one transaction, and a copy of the store is
// kept before. None of it is an act: whoever reads the store is told the same as before. Where
// pages or the log are damaged nothing is touched. What is left is told as storeProblems does.
// Throws StoreError, and nothing was changed.
RepairReport repairStore(const std::string& path);

// Makes the indexes that a store of this version lacks anew, as far as that goes, without keeping a
// copy: of an open one inside of a transaction, or of a copy that nobody else knows. Nothing in a
// store of an earlier version, which gets them when it is brought up to date.
void makeMissingIndexes(sqlite::Connection& file);
void makeMissingIndexes(const std::string& path);

// The records without any content that have stood in no group and were never changed, and that
// were made more than a day ago, but not before the journal begins: what a program left that was
// ended before it saved.
std::vector<RecordEntry> blankRecordsIn(const std::string& path);

// The identifiers of the records of which the journal tells that they were removed, whether or not
// they have come back.
std::set<std::string> removedRecordsIn(const std::string& path);

}  // namespace ox
