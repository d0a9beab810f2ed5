#pragma once

#include <cstddef>
#include <optional>
#include <shared_mutex>

#include "ox/OxMacAddressBookSDK/tables/book_id.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_hash_table.hpp"

namespace ox {

// Which book holds which record: the stamps that discovery gives, and what a record worked out for
// itself where it had none. Entries stay until they are removed. Safe from any thread; no lock
// is held when an operation returns.
class RecordStampTable {
 public:
  // Missing when nothing is stored for the record.
  std::optional<BookId> find(const RecordKey& record) const;
  // Replaces what was stored.
  void set(const RecordKey& record, BookId book);
  // Stores only where nothing is; the result is what is stored afterwards.
  BookId setIfAbsent(const RecordKey& record, BookId book);
  // Makes room for that many records altogether.
  void reserve(std::size_t count);
  void remove(const RecordKey& record);
  std::size_t count() const;

 private:
  mutable std::shared_mutex mutex_;
  RecordHashTable<BookId> books_;
};

}  // namespace ox
