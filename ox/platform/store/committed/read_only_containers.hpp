#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>

#include "ox/platform/store/committed/committed_records.hpp"
#include "ox/platform/store/file/store_file.hpp"
#include "ox/platform/store/values/act.hpp"

namespace ox {

// The containers that stand for a book that takes no changes: nothing in them is changed by anybody
// but whoever brings what comes from there. Asked of the file once after each commit. Borrows both;
// used by one thread at a time; throws StoreError when the file fails.
class ReadOnlyContainers {
 public:
  ReadOnlyContainers(StoreFile& file, CommittedRecords& committed)
      : file_(file), committed_(committed) {}

  // Why nothing in the container may be changed; empty when it may, and for one that is not there.
  std::string refusalOf(std::int32_t container);
  // Of an act that changes something in any of them; empty for one that may, see
  // Act::bringsFromElsewhere. Tags are the user's own and may change.
  std::string refusalOf(const Act& act);

 private:
  const std::unordered_set<std::int32_t>& rows();

  StoreFile& file_;
  CommittedRecords& committed_;
  StoreMoment moment_;
  std::optional<std::unordered_set<std::int32_t>> rows_;
};

}  // namespace ox
