#pragma once

#include <cstddef>
#include <string>

#include "tests/support/second_process.hpp"
#include "tests/support/store_environment.hpp"

// What the processes that live in one store agree on.

namespace ox::kills {

// Persons s0, s1, ... and groups g0, g1, ... are there from the beginning to the end, named by
// their identifiers.
inline constexpr std::size_t kSharedPersons = 4;
inline constexpr std::size_t kSharedGroups = 3;
// What pictures of shared persons begin with; the name of the thing follows.
inline constexpr const char* kPicture = "picture ";

// Every process ends when this file is there.
inline std::string stopFile() {
  return support::temporaryPath("stop").string();
}
inline std::string lifeLog(const std::string& name) {
  return support::temporaryPath("life-" + name + ".log").string();
}

extern const support::SecondProcess lives;    // acts, and logs what it does
extern const support::SecondProcess watches;  // reads, and logs what must not be

}  // namespace ox::kills
