#pragma once

#include <cstddef>
#include <cstdint>
#include <shared_mutex>
#include <string>

#include "ox/OxMacAddressBookSDK/tables/record_hash_table.hpp"
#include "ox/base/text.hpp"

namespace ox {

// One text a record, worked out once. Entries stay until they are removed. Safe from any thread; no
// lock is held when an operation returns.
class RecordTextTable {
 public:
  // Missing when nothing is stored for the record; an empty text is a stored one.
  Text find(const RecordKey& record) const;
  // How often an entry was removed so far.
  std::uint64_t removals() const;
  // Replaces what was stored, unless an entry was removed since that count was taken: the text may
  // then have been worked out from what is no longer so.
  void setUnlessRemoved(const RecordKey& record, std::string text, std::uint64_t removalsBefore);
  void remove(const RecordKey& record);
  std::size_t count() const;

 private:
  mutable std::shared_mutex mutex_;
  RecordHashTable<std::string> texts_;
  std::uint64_t removals_ = 0;
};

}  // namespace ox
