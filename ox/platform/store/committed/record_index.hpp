#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "ox/platform/store/values/record_entry.hpp"
#include "ox/platform/store/values/record_keys.hpp"

namespace ox {

// Every committed record in memory, about 45 bytes each: what listing, look-up and the question
// "which container holds it" need, without a statement. Used under its owner's lock.
class RecordIndex {
 public:
  using Entry = RecordEntry;

  void reserve(std::size_t records);
  // Rows must rise from call to call.
  void append(const Entry& entry);
  // Nothing happens when the row is not there.
  void removeRow(std::int64_t row);
  // Null when there is no such record. Borrowed until the next change.
  const Entry* find(const RecordKey& key) const;
  RecordKeys all(RecordKind kind) const;
  RecordKeys inContainer(std::int32_t container, RecordKind kind) const;
  std::size_t size() const { return alive_; }
  void clear();

 private:
  std::size_t slotOf(const RecordKey& key) const;
  void rehash(std::size_t slots);
  void compact();

  std::vector<Entry> entries_;        // in creation order, removed ones marked
  std::vector<std::uint32_t> slots_;  // open addressing: position in entries_ + 1, 0 free
  std::size_t used_ = 0;              // slots that are not free
  std::size_t alive_ = 0;
  std::unordered_map<std::int32_t, std::vector<std::uint32_t>> containers_;  // positions
};

}  // namespace ox
