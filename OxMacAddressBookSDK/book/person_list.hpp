#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace ox {

class _ABPerson;

// The live list of a book's persons: whoever holds it sees later changes. Safe from any thread; to
// walk it, take a snapshot.
class PersonList {
 public:
  using Person = std::shared_ptr<_ABPerson>;

  std::size_t size() const;
  // Null when the index is out of range.
  Person element(std::size_t index) const;
  std::vector<Person> snapshot() const;

  void append(Person person);
  void append(const std::vector<Person>& persons);
  // Appends unless another thread has filled the list meanwhile.
  void fillIfEmpty(std::vector<Person> persons);
  // All of them in one step; those that are not in the list are left out.
  void removeAll(const std::vector<Person>& persons);
  void clear();

 private:
  mutable std::mutex mutex_;
  std::vector<Person> persons_;
};

}  // namespace ox
