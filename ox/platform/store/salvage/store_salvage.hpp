#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ox/base/replacement_file.hpp"
#include "ox/platform/store/salvage/salvage_report.hpp"

namespace ox {

// Brings what can be read of a damaged store into a new one: contacts with the identifiers they
// have, groups, pictures, accounts. The journal stays behind. What is damaged hides nothing but
// itself: the rows are read from the pages, whatever has become of the trees that lead to them. The
// damaged store is only read; nobody should be writing it meanwhile. Each step throws StoreError,
// FailureError or std::system_error, and then nothing is at the target. Used by one thread.
class StoreSalvage {
 public:
  // Refuses a target that is there already.
  StoreSalvage(std::string from, const std::string& to);
  StoreSalvage(const StoreSalvage&) = delete;
  StoreSalvage& operator=(const StoreSalvage&) = delete;
  ~StoreSalvage();

  // What lies beside the target until it is complete.
  std::vector<std::string> files() const;
  SalvageReport take();
  // Puts the new store in its place, synced.
  void put();

 private:
  std::string from_;
  std::unique_ptr<ReplacementFile> file_;
};

// Throws StoreError when something is there.
void refuseExisting(const std::string& path);

}  // namespace ox
