#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "ox/sync/remote/remote_book.hpp"
#include "ox/sync/remote/remote_error.hpp"
#include "ox/sync/run/steps/card_step.hpp"

namespace ox::sync {

// Notes in the store what is about to be created and deleted elsewhere: whoever is killed before
// the answer finds out what has arrived. Gives the rows of the steps their ids. Throws StoreError.
void noteIntents(CardSteps& steps);

// Sends what the steps are to send (cards before groups, deletions last and groups first), and
// reads back what was written. Each step is told what became of it. Where the book as a whole
// fails, the rest is left, and the result says why: what was done is done.
std::optional<RemoteError> sendSteps(CardSteps& steps, RemoteBook& remote, SpillFile& spill,
                                     const std::function<void(std::size_t, std::size_t)>& progress);

}  // namespace ox::sync
