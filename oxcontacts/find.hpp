#pragma once

#include <map>
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
// The configured book; its place in the file goes before what is wrong with it.
std::shared_ptr<OxMacAddressBook> findConfiguredBook(const Context& context, const BookList& books);
// The books of accounts of that name, be it the account's or the book's own, without a discovery.
std::vector<std::shared_ptr<OxMacAddressBook>> booksOfAccountsNamed(const std::string& text);

// How books are called, as of when it is made. One thread at a time.
class BookNames {
 public:
  BookNames();
  // The ID where no account has such a book.
  std::string nameOf(const Text& id) const;

 private:
  std::map<std::string, std::string> names_;
};

// A person or group by ID, with or without its ending, else by display name, else by the words of
// it that were typed: whole or in part, in any order, case and spelling; else by the beginning of
// the ID; else by all of that behind BOOK/. Only those of the book that --book names count, where
// it does. What is more exact decides; whoever has a terminal is asked which one of several is
// meant.
std::shared_ptr<_ABPerson> findPerson(const Context& context, const std::string& text);
// Each once, in the order of the texts.
using Persons = std::vector<std::shared_ptr<_ABPerson>>;
Persons findPersons(const Context& context, const std::vector<std::string>& texts);
// By ID or whole display name alone, for what cannot be taken back.
std::shared_ptr<_ABPerson> findPersonByWholeName(const Context& context, const std::string& text);
std::shared_ptr<_ABGroup> findGroup(const Context& context, const std::string& text);

// The books of the store, found with progress.
BookList discoveredBooks(const Context& context);

}  // namespace ox::program
