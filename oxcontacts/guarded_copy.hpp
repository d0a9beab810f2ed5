#pragma once

#include <cstdint>
#include <list>
#include <optional>
#include <string>

#include "ox/OxMacAddressBookSDK/admin/store_copy.hpp"
#include "oxcontacts/context.hpp"
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

// Keeps a copy of the store as it is now, from before the command of that name replaces much of it;
// the result is its path. Tells the user where it lies. The oldest ones go, now or when the caller
// says so.
enum class Sweep : std::uint8_t { Now, Later };
std::string keepCopyBefore(const Context& context, const std::string& command,
                           Sweep sweep = Sweep::Now);

}  // namespace ox::program
