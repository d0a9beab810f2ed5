#pragma once

#include <vector>

#include "ox/sync/run/steps/card_step.hpp"
#include "ox/sync/synchronise.hpp"

// What is told of steps, before they are done and after.

namespace ox::sync {

SyncCounts plannedHere(const CardSteps& steps);
SyncCounts plannedThere(const CardSteps& steps);
// What was done, in these and before.
void countDone(const CardSteps& steps, BookReport& report);

// The steps for people; of the deletions alone.
std::vector<PlannedChange> plannedChanges(const CardSteps& steps);
std::vector<PlannedChange> plannedDeletions(const CardSteps& steps);

}  // namespace ox::sync
