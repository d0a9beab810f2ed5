#include "ox/platform/AddressBook/record_map.hpp"

#include <mutex>
#include <utility>

#include "ox/platform/AddressBook/record_factory.hpp"

namespace ox::record_map {
namespace {

// Open addressing over plain pointers to the records: a million of them cost 16 MB. A record leaves
// the table in its destructor, so every pointer in it is good while the lock is held, even when the
// record's last owner has just gone. For the same reason nobody may let go of a record with the
// lock held, however briefly it was owned: it may be the last owner by then, and the destructor
// would wait for the lock for ever.
class Table {
 public:
  std::mutex& mutex() { return mutex_; }

  // The live object, or null. Call with the lock held.
  std::shared_ptr<ABRecord> find(const RecordKey& key) {
    if (slots_.empty()) return nullptr;
    auto* record = slots_[slotOf(key)];
    // Of a record that is not const: a weak pointer to a const one is made by way of an owner.
    return record != nullptr ? record->weak_from_this().lock() : nullptr;
  }

  // Must come before put, which therefore cannot fail.
  void makeRoom() {
    if ((used_ + 1) * 4 > slots_.size() * 3) grow();
  }

  void put(ABRecord& record) {
    auto& slot = slots_[slotOf(record.key())];
    if (slot == nullptr) ++used_;
    slot = &record;
  }

  void erase(const ABRecord& record) {
    if (slots_.empty()) return;
    auto hole = slotOf(record.key());
    if (slots_[hole] != &record) return;  // a new object has taken its place
    const auto mask = slots_.size() - 1;
    // Close the hole so that every later entry of the run stays reachable.
    for (auto next = (hole + 1) & mask; slots_[next] != nullptr; next = (next + 1) & mask) {
      const auto home = slots_[next]->key().hash() & mask;
      if (((next - home) & mask) >= ((next - hole) & mask)) {
        slots_[hole] = slots_[next];
        hole = next;
      }
    }
    slots_[hole] = nullptr;
    --used_;
  }

 private:
  std::size_t slotOf(const RecordKey& key) const {
    const auto mask = slots_.size() - 1;
    auto slot = key.hash() & mask;
    while (slots_[slot] != nullptr && slots_[slot]->key() != key) slot = (slot + 1) & mask;
    return slot;
  }

  void grow() {
    auto old =
        std::exchange(slots_, std::vector<ABRecord*>(std::max<std::size_t>(64, slots_.size() * 2)));
    for (auto* record : old) {
      if (record != nullptr) slots_[slotOf(record->key())] = record;
    }
  }

  std::mutex mutex_;
  std::vector<ABRecord*> slots_;
  std::size_t used_ = 0;
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

}  // namespace ox::record_map
