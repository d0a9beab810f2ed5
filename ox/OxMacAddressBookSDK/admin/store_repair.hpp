#pragma once

#include "ox/base/export.hpp"
#include "ox/platform/store/upkeep/repair_report.hpp"

namespace ox {

// Mends what is wrong with the contact store of this process and with its tags and follows from
// what is whole, in one transaction for each of both files. Where nothing is wrong then, it takes
// away as one act, which can be taken back, what is of no use: tags of records that are gone, and
// records without any content that were made more than a day ago and never changed. A copy is kept
// before anything is changed. What is left is told as problemsOfStoreAndTags does. To be called
// before this process has asked the store for anything. Throws FailureError; what an earlier one of
// these steps has done stays.
OX_EXPORT RepairReport repairStoreAndTags();

}  // namespace ox
