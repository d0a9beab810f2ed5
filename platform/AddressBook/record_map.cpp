#include "platform/AddressBook/record_map.hpp"

#include <mutex>
#include <utility>

#include "platform/AddressBook/record_factory.hpp"

namespace ox::record_map {
namespace {

// Open addressing over plain pointers to the records: a million of them cost 16 MB. A record leaves
// the table in its destructor, so every pointer in it is good while the lock is held, even when the
// record's last owner has just gone.
class Table {
 public:
  std::mutex& mutex() { return mutex_; }

  // The live object, or null. Call with the lock held.
  std::shared_ptr<ABRecord> find(const RecordKey& key) {
    if (slots_.empty()) return nullptr;
    const auto* record = slots_[slotOf(key)];
    return record != nullptr ? std::const_pointer_cast<ABRecord>(record->weak_from_this().lock())
                             : nullptr;
  }

  // Must come before put, and before the record is made: a record that died with the lock held
  // would wait for it for ever.
  void makeRoom() {
    if ((used_ + 1) * 4 > slots_.size() * 3) grow();
  }

  void put(const ABRecord& record) {
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
    auto old = std::exchange(
        slots_, std::vector<const ABRecord*>(std::max<std::size_t>(64, slots_.size() * 2)));
    for (const auto* record : old) {
      if (record != nullptr) slots_[slotOf(record->key())] = record;
    }
  }

  std::mutex mutex_;
  std::vector<const ABRecord*> slots_;
  std::size_t used_ = 0;
};

Table& table() {
  static auto& table = *new Table;
  return table;
}

template <typename Record, typename Make>
std::vector<std::shared_ptr<Record>> recordsOf(const RecordKeys& keys, Make make) {
  std::vector<std::shared_ptr<Record>> records;
  records.reserve(keys.size());
  const std::lock_guard lock(table().mutex());
  for (const auto& key : keys) {
    // An identifier may have come back as a record of the other kind while somebody still holds the
    // removed one.
    auto record = std::dynamic_pointer_cast<Record>(table().find(key));
    if (!record) {
      table().makeRoom();
      record = make(key);
      table().put(*record);
    }
    records.push_back(std::move(record));
  }
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
  return persons({key}).front();
}

std::shared_ptr<ABGroup> group(const RecordKey& key) {
  return groups({key}).front();
}

void forget(const ABRecord& record) {
  const std::lock_guard lock(table().mutex());
  table().erase(record);
}

}  // namespace ox::record_map
