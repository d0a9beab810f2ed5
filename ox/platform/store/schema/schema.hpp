#pragma once

#include <string>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/schema/store_connection.hpp"
#include "ox/platform/store/schema/store_form.hpp"

namespace ox {

// How long a store that another process has locked is waited for.
inline constexpr int kBusyMilliseconds = 10'000;

// Opens the store file, making it (and its folder) when absent, and brings its schema up to date.
// What a killed process has left is put right by the opening: commits that stand whole in the log
// count, a half-written one is ignored, a file whose tables were never committed is made anew.
// Throws StoreError naming the file and the reason: a directory, a foreign file, a newer schema,
// one that is not ours word by word (versionOf), a lock that another process keeps, a place that
// cannot be written.
StoreConnection openStoreFile(const std::string& path);

// Opens an existing store to look at it, without changing its schema. Throws StoreError likewise,
// also when there is no file.
StoreConnection openExistingStoreFile(const std::string& path,
                                      MissingIndexes missing = MissingIndexes::Refuse);

// Brings such a store up to date without keeping a copy of it as it was; inside of a write
// transaction. One of this version stays as it is, whatever indexes it lacks.
void bringUpToDate(sqlite::Connection& store, const std::string& path);

// Returns when the open store's write-ahead log, if there is one, would survive a power cut.
void syncWriteAheadLog(const sqlite::Connection& store);

// The failure as the store reports it, with the file's name in front.
[[noreturn]] void throwStoreError(const std::string& path, const std::exception& error);

}  // namespace ox
