#pragma once

#include <vector>

#include "ox/sync/synchronise.hpp"
#include "oxcontacts/context.hpp"
#include "oxcontacts/output/json.hpp"

namespace ox::program {

// What runs of books came to, for people and for programs.

Json countsJson(const sync::SyncCounts& counts);
// "3 new, 1 changed, 0 deleted here; 1 sent, 1 back, 0 deleted there"
std::string countsText(const sync::SyncCounts& down, const sync::SyncCounts& up);
// "3 new, 1 changed, 0 deleted here; 1 sent, 0 deleted there; 1 conflict; 2 refused"
std::string summaryOf(const sync::BookReport& report);
// The steps of the plan, a line each, of a long one the first; for the error stream.
void tellPlan(const Context& context, const sync::BookReport& report);
// The line of the book on the standard output where something was done or planned; on the error
// stream what the user should know of it, and the words that help.
void printBook(const Context& context, const sync::BookReport& report);

Json conflictJson(const sync::OpenConflict& conflict);
Json reportsJson(const std::vector<sync::BookReport>& reports,
                 const std::vector<sync::OpenConflict>& conflicts);

// Of all of them: what failed goes before what is to be tried later, that before what was refused.
ExitCode exitCodeOf(const std::vector<sync::BookReport>& reports);

}  // namespace ox::program
