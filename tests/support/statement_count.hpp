#pragma once

#include <cstdint>

namespace ox::support {

// How many statements this process has run so far on the files that were opened since the first
// call: what a store on another machine would have to be asked. Without the looks whether others
// have written, whose number depends on the time. To be called before the store is opened; safe
// from any thread.
std::uint64_t statementsRun();
// How many such looks.
std::uint64_t looksMade();
// How many steps SQLite has taken for all statements that have ended, on the same files: what they
// cost, whatever the machine.
std::uint64_t stepsTaken();

}  // namespace ox::support
