// The books of a system without container database: one for each account id of a record.
#include <unordered_set>

#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/registry/builds.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_stamp_table.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox::registry {

Books booksByAccountIds() {
  std::vector<BookId> ids;
  std::unordered_set<BookId> met;
  const auto meet = [&ids, &met](BookId id) {
    if (met.insert(id).second) ids.push_back(id);
  };
  meet(BookId::of(OxMacAddressBookID));
  const auto records = ABAddressBook::sharedAddressBook();
  for (auto& person : records->people()) meet(hostPerson(std::move(person))->bookId());
  for (auto& group : records->groups()) meet(hostGroup(std::move(group))->bookId());

  Books books;
  books.reserve(ids.size());
  for (const auto id : ids) books.push_back(OxMacAddressBook::listedWithID(id.text()));
  return books;
}

}  // namespace ox::registry
