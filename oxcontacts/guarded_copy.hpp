#pragma once

#include <list>
#include <optional>
#include <string>

#include "ox/OxMacAddressBookSDK/admin/store_copy.hpp"
#include "oxcontacts/interruption.hpp"

namespace ox::program {

// A copy of the store whose files go when a signal ends the program before they are put in their
// places.
struct GuardedCopy {
  explicit GuardedCopy(const std::string& path) {
    const SignalsHeld held;
    copy.emplace(path);
    for (auto& file : copy->files()) guards.emplace_back(std::move(file));
  }

  std::list<GoesWhenInterrupted> guards;
  std::optional<StoreCopy> copy;
};

}  // namespace ox::program
