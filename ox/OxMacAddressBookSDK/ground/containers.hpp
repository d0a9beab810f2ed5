#pragma once

#include <vector>

#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox {

class ABAddressBook;
class ABRecord;
class _ABPerson;

// The questions that several walks ask of the container database.

// The first container that holds the person or group; null when none is known.
CNContainerPtr containerOf(CNContactStore& store, const ABRecord& record);
// With identifiers only.
std::vector<CNContactPtr> contactsIn(CNContactStore& store, const CNContainer& container);
// The contact's record; null when the record database does not know it or it is no person.
std::shared_ptr<_ABPerson> personForContact(ABAddressBook& records, const CNContact& contact);

}  // namespace ox
