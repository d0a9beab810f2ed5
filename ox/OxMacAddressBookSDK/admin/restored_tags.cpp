#include "ox/OxMacAddressBookSDK/admin/restored_tags.hpp"

#include <algorithm>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox {
namespace {

// The persons that the load made: one for each of the file's, behind what the cache held. Unlike
// the store, the cache knows nothing of what other processes made meanwhile. Empty when fewer were
// made.
Persons madeByLoad(OxMacAddressBook& book, const std::vector<RecordKey>& removed,
                   std::size_t count) {
  const auto cache = book.allPersons();
  auto persons = cache ? cache->snapshot() : Persons();
  if (count == 0 || persons.size() < count) return {};
  persons.erase(persons.begin(), persons.end() - static_cast<std::ptrdiff_t>(count));
  const auto first = recordOf(persons.front());  // null for a host's own person
  const bool isNew = first && std::ranges::find(removed, first->key()) == removed.end();
  return isNew ? persons : Persons();
}

}  // namespace

void settleRestoredTags(OxMacAddressBook& book, const std::vector<RecordKey>& removed,
                        const TagLists& loaded) {
  const auto& manager = book.tagManager();
  if (!manager) return;
  for (const auto& key : removed) {
    if (manager->tagsByPersonID(key.text())) manager->removeForPersonID(key.text());
  }
  const auto persons = madeByLoad(book, removed, loaded.size());
  for (std::size_t i = 0; i < persons.size(); ++i) {
    const auto identifier = persons[i]->ID();
    if (loaded[i].empty() || manager->tagsByPersonID(identifier) == loaded[i]) continue;
    manager->setTags_forPersonID(loaded[i], identifier);
  }
}

}  // namespace ox
