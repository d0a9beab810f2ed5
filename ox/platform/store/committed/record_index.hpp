#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "ox/base/record_slots.hpp"
#include "ox/platform/store/values/record_entry.hpp"
#include "ox/platform/store/values/record_keys.hpp"

namespace ox {

// Every committed record in memory, about 47 bytes each: what listing, look-up and the question
// "which container holds it" need, without a statement. What it is given comes from the file and
// may be damaged; then it answers what the file says, and nothing worse. Used under its owner's
// lock.
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
  const Entry* inRow(std::int64_t row) const;
  RecordKeys all(RecordKind kind) const;
  RecordKeys inContainer(std::int32_t container, RecordKind kind) const;
  std::size_t size() const { return slots_.size(); }
  void clear();

 private:
  // A slot holds a place in the list.
  struct Rules {
    static constexpr std::size_t kFullPercent = 75;
    const std::vector<Entry>& entries;

    const RecordKey& keyOf(std::uint32_t place) const { return entries[place].key; }
  };

  Rules rules() const { return {entries_}; }
  std::vector<Entry>::const_iterator placeOf(std::int64_t row) const;
  void compact();

  std::vector<Entry> entries_;  // in creation order; those that were removed have no key any more
  RecordSlots<std::uint32_t, Rules> slots_;
  std::unordered_map<std::int32_t, std::vector<std::uint32_t>> containers_;  // places
  // The place that was found last: whoever walks the records asks for the next one then.
  mutable std::size_t found_ = 0;
};

}  // namespace ox
