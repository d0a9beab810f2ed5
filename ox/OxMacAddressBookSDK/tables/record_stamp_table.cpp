#include "ox/OxMacAddressBookSDK/tables/record_stamp_table.hpp"

#include <mutex>

namespace ox {

std::optional<BookId> RecordStampTable::find(const RecordKey& record) const {
  const std::shared_lock lock(mutex_);
  const BookId* const book = books_.find(record);
  return book == nullptr ? std::nullopt : std::optional(*book);
}

void RecordStampTable::set(const RecordKey& record, BookId book) {
  const std::unique_lock lock(mutex_);
  if (BookId* const stored = books_.insert(record, book)) *stored = book;
}

BookId RecordStampTable::setIfAbsent(const RecordKey& record, BookId book) {
  const std::unique_lock lock(mutex_);
  const BookId* const stored = books_.insert(record, book);
  return stored == nullptr ? book : *stored;
}

void RecordStampTable::reserve(std::size_t count) {
  const std::unique_lock lock(mutex_);
  books_.reserve(count);
}

void RecordStampTable::remove(const RecordKey& record) {
  const std::unique_lock lock(mutex_);
  books_.erase(record);
}

std::size_t RecordStampTable::count() const {
  const std::shared_lock lock(mutex_);
  return books_.size();
}

}  // namespace ox
