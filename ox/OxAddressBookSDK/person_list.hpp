#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>

#include "ox/OxAddressBookSDK/record_lists.hpp"
#include "ox/base/export.hpp"

namespace ox {

// The live list of a book's persons: whoever holds it sees later changes. Safe from any thread; to
// walk it, take a snapshot.
class OX_EXPORT PersonList {
 public:
  using Person = std::shared_ptr<IOxPerson>;

  std::size_t size() const;
  // Null when the index is out of range.
  Person element(std::size_t index) const;
  Persons snapshot() const;

  void append(Person person);
  void append(const Persons& persons);
  // Rises whenever the list is filled or emptied: what was fetched under an older number is stale.
  std::uint64_t epoch() const;
  // Puts those that are not in it yet before the persons that came during the fetch; nothing when
  // the list was filled or emptied since that epoch.
  void fill(const Persons& persons, std::uint64_t epoch);
  // Appends a person that was made since that epoch, unless a fill has found it already.
  void appendNew(const Person& person, std::uint64_t epoch);
  // All of them in one step; those that are not in the list are left out.
  void removeAll(const Persons& persons);
  void clear();

 private:
  mutable std::mutex mutex_;
  Persons persons_;
  std::uint64_t epoch_ = 0;
};

}  // namespace ox
