#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ox/base/export.hpp"
#include "ox/records/record_counts.hpp"

namespace ox {

// A copy of the contact store of this process and of its tags. Both lie under names of their own
// beside the files that they are to replace, and are gone with this object unless they are put
// there. Each step throws StoreError or std::system_error, and what they were to replace is as it
// was. Used by one thread at a time.
class OX_EXPORT StoreCopy {
 public:
  // Makes both, empty. The tags are to go to the path with ".tags" after it; links are followed.
  // Refused for a file of the store itself, and when something else than tags lies where the tags
  // are to go: nobody has named that file.
  explicit StoreCopy(const std::string& path);
  StoreCopy(const StoreCopy&) = delete;
  StoreCopy& operator=(const StoreCopy&) = delete;
  ~StoreCopy();

  // Where they lie until they are put in their places, each with its journal: for whoever must
  // remove them when a signal ends the process.
  std::vector<std::string> files() const;
  // Takes what is committed at one moment, whatever other processes do meanwhile; the result is
  // what the copy holds. Tags that cannot be read are refused, or are not in the copy.
  enum class DamagedTags : std::uint8_t { Refuse, LeaveOut };
  RecordCounts take(DamagedTags damaged = DamagedTags::Refuse);
  // Puts both in their places, synced, once both are complete: the tags first. Where there are no
  // tags, those of an earlier copy go.
  void put();

 private:
  struct Copies;
  std::unique_ptr<Copies> copies_;
};

}  // namespace ox
