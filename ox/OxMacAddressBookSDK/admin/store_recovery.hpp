#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/platform/store/salvage/salvage_report.hpp"

namespace ox {

// Brings what can be read of a damaged contact store and of its tags into a new store, with tags of
// its own. The damaged one is only read, without the database and without leaning on anything that
// is damaged; nobody should be writing it meanwhile, and this process must not have opened it: the
// database would lose its locks on it. Each step throws StoreError, FailureError or
// std::system_error, and then nothing is at the target. Used by one thread at a time.
class OX_EXPORT StoreRecovery {
 public:
  // Refuses a target that is there already, or whose tags are, or that is this process's store.
  StoreRecovery(const std::string& from, const std::string& to);
  StoreRecovery(const StoreRecovery&) = delete;
  StoreRecovery& operator=(const StoreRecovery&) = delete;
  ~StoreRecovery();

  // What lies beside the target until it is complete: for whoever must remove it when a signal ends
  // the process.
  std::vector<std::string> files() const;
  SalvageReport take();
  // Puts the new store and its tags in their places, synced.
  void put();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace ox
