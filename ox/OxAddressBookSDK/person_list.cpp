#include "ox/OxAddressBookSDK/person_list.hpp"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace ox {

std::size_t PersonList::size() const {
  const std::lock_guard lock(mutex_);
  return persons_.size();
}

PersonList::Person PersonList::element(std::size_t index) const {
  const std::lock_guard lock(mutex_);
  return index < persons_.size() ? persons_[index] : nullptr;
}

Persons PersonList::snapshot() const {
  const std::lock_guard lock(mutex_);
  return persons_;
}

void PersonList::append(Person person) {
  const std::lock_guard lock(mutex_);
  persons_.push_back(std::move(person));
}

void PersonList::append(const Persons& persons) {
  const std::lock_guard lock(mutex_);
  persons_.insert(persons_.end(), persons.begin(), persons.end());
}

std::uint64_t PersonList::epoch() const {
  const std::lock_guard lock(mutex_);
  return epoch_;
}

void PersonList::fill(const Persons& persons, std::uint64_t epoch) {
  Persons all;
  all.reserve(persons.size());
  const std::lock_guard lock(mutex_);
  assert(epoch <= epoch_);
  if (epoch_ != epoch) return;
  std::unordered_set<const void*> present;
  for (const auto& person : persons_) present.insert(person.get());
  for (const auto& person : persons) {
    if (!present.contains(person.get())) all.push_back(person);
  }
  all.insert(all.end(), persons_.begin(), persons_.end());
  persons_.swap(all);
  ++epoch_;
}

void PersonList::appendNew(const Person& person, std::uint64_t epoch) {
  const std::lock_guard lock(mutex_);
  assert(epoch <= epoch_);
  const bool found = epoch_ != epoch && std::ranges::find(persons_, person) != persons_.end();
  if (!found) persons_.push_back(person);
}

void PersonList::removeAll(const Persons& persons) {
  std::unordered_set<const void*> gone;
  for (const auto& person : persons) gone.insert(person.get());
  Persons released;  // persons are let go of outside the lock
  const std::lock_guard lock(mutex_);
  const auto kept =
      std::stable_partition(persons_.begin(), persons_.end(),
                            [&](const Person& person) { return !gone.contains(person.get()); });
  released.assign(std::make_move_iterator(kept), std::make_move_iterator(persons_.end()));
  persons_.erase(kept, persons_.end());
}

void PersonList::clear() {
  Persons released;  // persons are let go of outside the lock
  const std::lock_guard lock(mutex_);
  released.swap(persons_);
  ++epoch_;
}

}  // namespace ox
