#include "ox/OxMacAddressBookSDK/ground/containers.hpp"

#include <utility>

#include "ox/platform/AddressBook/ABRecord.hpp"

namespace ox {

CNContainerPtr containerOf(CNContactStore& store, const ABRecord& record) {
  auto containers = store.containersMatchingPredicate_error(
      CNContainer::predicateForContainerOfRecord(record.key(), record.kind()), nullptr);
  return containers.empty() ? nullptr : std::move(containers.front());
}

std::vector<CNContactPtr> contactsIn(CNContactStore& store, const CNContainer& container) {
  return store.unifiedContactsMatchingPredicate_keysToFetch_error(
      CNContact::predicateForContactsInContainerWithIdentifier(container.identifier()), {},
      nullptr);
}

}  // namespace ox
