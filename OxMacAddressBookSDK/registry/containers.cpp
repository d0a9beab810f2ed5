#include "OxMacAddressBookSDK/registry/containers.hpp"

#include "OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "platform/AddressBook/ABAddressBook.hpp"

namespace ox {

CNContainerPtr containerOf(CNContactStore& store, const ABRecord& record) {
  const auto predicate =
      record.kind() == RecordKind::Person
          ? CNContainer::predicateForContainerOfContactWithIdentifier(record.uniqueId())
          : CNContainer::predicateForContainerOfGroupWithIdentifier(record.uniqueId());
  const auto containers = store.containersMatchingPredicate_error(predicate, nullptr);
  return containers.empty() ? nullptr : containers.front();
}

std::vector<CNContactPtr> contactsIn(CNContactStore& store, const CNContainer& container) {
  return store.unifiedContactsMatchingPredicate_keysToFetch_error(
      CNContact::predicateForContactsInContainerWithIdentifier(container.identifier()), {},
      nullptr);
}

std::shared_ptr<_ABPerson> personForContact(ABAddressBook& records, const CNContact& contact) {
  return hostPerson(records.recordForUniqueId(contact.identifier()));
}

}  // namespace ox
