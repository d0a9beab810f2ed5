#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tests/faults/faulty_disk.hpp"

namespace ox::faults {

// One fault at one change of an operation.
struct Trouble {
  Fault fault = Fault::Full;
  std::uint64_t n = 1;

  // Whether the operation met it; the disk is whole again afterwards.
  template <typename Operation>
  bool during(Operation operation) const {
    FaultyDisk::shared().failAt(n, fault);
    operation();
    return FaultyDisk::shared().mend();
  }
};

// At which changes: at each, or, for a long operation, at the first ones and then at every 23rd.
enum class Points { Each, Sampled };

// Calls the attempt with each fault at one change after the other, until the attempt answers that
// its operation did not come that far, or something failed. The result is at how many changes the
// attempts met their fault.
int forEachTrouble(Points points, const std::function<bool(const Trouble&)>& attempt);

std::string storePath();

}  // namespace ox::faults
