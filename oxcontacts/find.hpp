#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/platform/Contacts/CNContainer.hpp"
#include "oxcontacts/context.hpp"

namespace ox::program {

// What the words BOOK, PERSON, GROUP and ACCOUNT on the command line mean. Each throws a
// CommandError: kNotFound when nothing bears that name, kUsage with the candidates when several do.

// By identifier or standard id, else by name.
CNContainerPtr findAccount(const std::string& text);
// Among the discovered books and those of accounts without records, which no discovery lists: by
// ID, else by name.
std::shared_ptr<OxMacAddressBook> findBook(const BookList& books, const std::string& text);
// By ID, else by display name.
std::shared_ptr<_ABPerson> findPerson(const std::string& text);
// Each once, in the order of the texts.
using Persons = std::vector<std::shared_ptr<_ABPerson>>;
Persons findPersons(const std::vector<std::string>& texts);
std::shared_ptr<_ABGroup> findGroup(const std::string& text);

// The books of the store, found with progress.
BookList discoveredBooks(const Context& context);

}  // namespace ox::program
