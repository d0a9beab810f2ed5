#pragma once

#include <vector>

#include "ox/sync/run/card_step.hpp"
#include "ox/sync/synchronise.hpp"

// What is told of steps, before they are done and after.

namespace ox::sync {

SyncCounts plannedHere(const std::vector<CardStep>& steps);
SyncCounts plannedThere(const std::vector<CardStep>& steps);
// What was done, in these and before.
void countDone(const std::vector<CardStep>& steps, BookReport& report);

// The steps for people; of the deletions alone.
std::vector<PlannedChange> plannedChanges(const std::vector<CardStep>& steps);
std::vector<PlannedChange> plannedDeletions(const std::vector<CardStep>& steps);

}  // namespace ox::sync
