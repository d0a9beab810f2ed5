#include "ox/OxMacAddressBookSDK/registry/person_book.hpp"

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/tables/known_books.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox {

void makeBookOf(const _ABPerson& person) {
  const Text id = person.addressBookID();
  if (knownBook(id)) return;
  CNContainerPtr account;
  for (const auto& container :
       CNContactStore::init()->containersMatchingPredicate_error({}, nullptr)) {
    if (OxMacAddressBook::standID(container->identifier()) != id) continue;
    if (account) return;
    account = container;
  }
  if (account) keepKnownBook(OxMacAddressBook::initWithContainer(account));
}

}  // namespace ox
