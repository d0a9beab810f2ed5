#include "ox/OxMacAddressBookSDK/admin/tags_to_remove.hpp"

#include <optional>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/ground/contained.hpp"
#include "ox/base/failures.hpp"

namespace ox {

TagsToRemove::TagsToRemove(const std::vector<std::shared_ptr<_ABPerson>>& persons) {
  booksAndPersons_.reserve(persons.size());
  for (const auto& person : persons) {
    booksAndPersons_.emplace_back(person->addressBookID(), person->ID());
  }
}

TagsToRemove::Outcome TagsToRemove::remove() const {
  // The persons are gone already: nothing here may look as if they were not.
  std::optional<failures::Watch> watch;
  const bool ended = contained("not all tags of the removed persons could be removed", [&] {
    watch.emplace(failures::Watch::Over::OwnWork);
    for (const auto& [book, person] : booksAndPersons_) {
      const auto manager = OxTagManager::tagManagerWithID(book);
      if (manager && manager->tagsByPersonID(person)) manager->removeForPersonID(person);
    }
  });
  if (!ended || watch->hasFailures()) return Outcome::Incomplete;
  return OxTagManager::makeDurable() ? Outcome::Removed : Outcome::NotDurable;
}

}  // namespace ox
