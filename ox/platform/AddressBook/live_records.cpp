#include "ox/platform/AddressBook/live_records.hpp"

#include <mutex>
#include <utility>

#include "ox/base/record_slots.hpp"
#include "ox/platform/AddressBook/record_factory.hpp"

namespace ox::live_records {
namespace {

// A slot points to a record and reads its key there.
struct Rules {
  static constexpr std::size_t kFullPercent = 75;
  const RecordKey& keyOf(const ABRecord* record) const { return record->key(); }
};

// Plain pointers to the records: a million of them cost 16 MB. A record leaves the table in its
// destructor, so every pointer in it is good while the lock is held, even when the record's last
// owner has just gone. For the same reason nobody may let go of a record with the lock held,
// however briefly it was owned: it may be the last owner by then, and the destructor would wait for
// the lock for ever.
class Table {
 public:
  std::mutex& mutex() { return mutex_; }

  // The live object, or null. Call with the lock held.
  std::shared_ptr<ABRecord> find(const RecordKey& key) {
    auto* const* slot = slots_.find(key, Rules{});
    // Of a record that is not const: a weak pointer to a const one is made by way of an owner.
    return slot != nullptr ? (*slot)->weak_from_this().lock() : nullptr;
  }

  // For that many records altogether. Call with the lock held.
  void makeRoomFor(std::size_t records) { slots_.reserve(records, Rules{}); }

  // Must come before put, which therefore cannot fail.
  void makeRoom() { slots_.makeRoom(Rules{}); }

  void put(ABRecord& record) { *slots_.claim(record.key(), Rules{}).first = &record; }

  void erase(const ABRecord& record) {
    auto* const* slot = slots_.find(record.key(), Rules{});
    // Otherwise it never came to stand here, or a new object has taken its place.
    if (slot != nullptr && *slot == &record) slots_.erase(slot, Rules{});
  }

 private:
  std::mutex mutex_;
  RecordSlots<ABRecord*, Rules> slots_;
};

Table& table() {
  static auto& table = *new Table;
  return table;
}

template <typename Record, typename Make>
std::shared_ptr<Record> recordOf(const RecordKey& key, Make make) {
  std::shared_ptr<ABRecord> found;  // let go of when the lock is open again
  std::shared_ptr<Record> record;
  const std::lock_guard lock(table().mutex());
  found = table().find(key);
  // An identifier may have come back as a record of the other kind while somebody still holds the
  // removed one.
  record = std::dynamic_pointer_cast<Record>(std::move(found));
  if (!record) {
    table().makeRoom();
    record = make(key);
    table().put(*record);
  }
  return record;
}

template <typename Record, typename Make>
std::vector<std::shared_ptr<Record>> recordsOf(const RecordKeys& keys, Make make) {
  std::vector<std::shared_ptr<Record>> records;
  records.reserve(keys.size());
  {
    const std::lock_guard lock(table().mutex());
    table().makeRoomFor(keys.size());
  }
  for (const auto& key : keys) records.push_back(recordOf<Record>(key, make));
  return records;
}

}  // namespace

std::vector<std::shared_ptr<ABPerson>> persons(const RecordKeys& keys) {
  return recordsOf<ABPerson>(keys, makePersonRecord);
}

std::vector<std::shared_ptr<ABGroup>> groups(const RecordKeys& keys) {
  return recordsOf<ABGroup>(keys, makeGroupRecord);
}

std::shared_ptr<ABPerson> person(const RecordKey& key) {
  return recordOf<ABPerson>(key, makePersonRecord);
}

std::shared_ptr<ABGroup> group(const RecordKey& key) {
  return recordOf<ABGroup>(key, makeGroupRecord);
}

void forget(const ABRecord& record) {
  const std::lock_guard lock(table().mutex());
  table().erase(record);
}

}  // namespace ox::live_records
