#pragma once

#include <optional>
#include <string>

#include "ox/platform/store/backup.hpp"
#include "oxcontacts/interruption.hpp"

namespace ox::program {

// A copy of a database that goes when a signal ends the program before it is put in its place.
struct GuardedCopy {
  explicit GuardedCopy(const std::string& target) {
    const SignalsHeld held;
    copy.emplace(target);
    guard.emplace(copy->path());
  }

  std::optional<GoesWhenInterrupted> guard;
  std::optional<DatabaseCopy> copy;
};

}  // namespace ox::program
