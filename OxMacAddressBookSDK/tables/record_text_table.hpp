#pragma once

#include <cstddef>
#include <shared_mutex>
#include <string>

#include "OxMacAddressBookSDK/tables/record_map.hpp"
#include "base/text.hpp"

namespace ox {

// One text a record, worked out once. Entries stay until they are removed. Safe from any thread; no
// lock is held when an operation returns.
class RecordTextTable {
 public:
  // Missing when nothing is stored for the record; an empty text is a stored one.
  Text find(const RecordKey& record) const;
  // Replaces what was stored.
  void set(const RecordKey& record, std::string text);
  void remove(const RecordKey& record);
  std::size_t count() const;

 private:
  mutable std::shared_mutex mutex_;
  RecordMap<std::string> texts_;
};

}  // namespace ox
