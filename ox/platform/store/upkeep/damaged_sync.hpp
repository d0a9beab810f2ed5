#pragma once

#include <cstdint>

#include "ox/base/sqlite/connection.hpp"

namespace ox {

// How many were forgotten.
struct ForgottenSync {
  std::int64_t cards = 0;
  std::int64_t notes = 0;  // conflicts and runs
};

// Takes away what is damaged of accounts in step with others: cards, with their texts and
// conflicts, conflicts and runs. The other side tells of the cards again, and their records are
// matched with them: so every book is listed as a whole by the next run, for a server tells nothing
// of a card that has not changed, and nobody can tell of which book a damaged one was. A damaged
// login or book stays. Inside of a transaction.
ForgottenSync forgetDamagedSync(sqlite::Connection& file);

}  // namespace ox
