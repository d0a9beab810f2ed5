#pragma once

#include <cstdint>
#include <string>

#include "ox/platform/store/values/sync_rows.hpp"
#include "ox/sync/synchronise.hpp"

namespace ox::sync {

// How the store keeps what a run came to, and back.
SyncRun rowOfRun(const std::string& container, KnownRun run);
KnownRun runOfRow(const SyncRun& row);

// Why the last run of the book did not end in step; empty when it did, or there was none.
std::string lastFailureOf(const SyncBook& book);

// Keeps that a run has failed, unless the one before has failed likewise: a server that is away for
// a week is one run that failed, and does not drive out all others.
void noteFailedRun(const BookReport& report, std::int64_t start);

}  // namespace ox::sync
