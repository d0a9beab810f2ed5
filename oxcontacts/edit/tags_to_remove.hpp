#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox::program {

// The tags of persons that are about to be removed. Whose they are must be asked while the persons
// are there, after the books were discovered; taken away they must be when the persons are gone,
// for tags are removed at once.
class TagsToRemove {
 public:
  explicit TagsToRemove(const std::vector<std::shared_ptr<_ABPerson>>& persons);

  // Returns when it would survive a power cut; throws a CommandError that says what is left.
  void remove() const;

 private:
  std::vector<std::pair<Text, Text>> booksAndPersons_;
};

}  // namespace ox::program
