#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ox/sync/synchronise.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

// Those of these containers; of all where none is named.
std::vector<sync::OpenConflict> conflictsOf(const std::vector<std::string>& containers);

// sync --conflicts: who, what, theirs and ours, and the words that settle it.
void printConflicts(const Context& context, const std::vector<sync::OpenConflict>& conflicts);

// sync --resolve CARD mine|theirs: the one of that number, else all of the person or group. Throws
// a CommandError.
void settle(const Context& context, const std::vector<sync::OpenConflict>& conflicts,
            const std::string& card, const std::string& side);

}  // namespace ox::program
