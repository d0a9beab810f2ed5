#pragma once

#include <cstdint>

#include "ox/base/sqlite/connection.hpp"
#include "ox/platform/store/schema/sync_anchor.hpp"

namespace ox {

// What a store says of an act that was noted beside it.
enum class NotedAct : std::uint8_t {
  IsThere,
  Unknown,  // the act of another store, of a time that the journal does not reach back to, or of
            // one before somebody was forgotten, when all acts got other names
  IsMissing,
};
// Throws sqlite::Error, and DamagedBytes where a row that is asked for is damaged.
NotedAct stateOf(const SyncedAct& noted, sqlite::Connection& store);

}  // namespace ox
