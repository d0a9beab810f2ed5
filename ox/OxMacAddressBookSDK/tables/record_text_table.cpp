#include "ox/OxMacAddressBookSDK/tables/record_text_table.hpp"

#include <mutex>
#include <utility>

namespace ox {

Text RecordTextTable::find(const RecordKey& record) const {
  const std::shared_lock lock(mutex_);
  const std::string* const text = texts_.find(record);
  return text == nullptr ? std::nullopt : Text(*text);
}

std::uint64_t RecordTextTable::removals() const {
  const std::shared_lock lock(mutex_);
  return removals_;
}

void RecordTextTable::setUnlessRemoved(const RecordKey& record, std::string text,
                                       std::uint64_t removalsBefore) {
  const std::unique_lock lock(mutex_);
  if (removals_ != removalsBefore) return;
  if (std::string* const stored = texts_.insert(record, {})) *stored = std::move(text);
}

void RecordTextTable::remove(const RecordKey& record) {
  const std::unique_lock lock(mutex_);
  ++removals_;
  texts_.erase(record);
}

std::size_t RecordTextTable::count() const {
  const std::shared_lock lock(mutex_);
  return texts_.size();
}

}  // namespace ox
