// Which record a person is, and which book holds it.
#include <cassert>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/ground/containers.hpp"
#include "ox/OxMacAddressBookSDK/tables/known_books.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_stamp_table.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_text_table.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox {

std::shared_ptr<_ABPerson> hostPerson(std::shared_ptr<ABRecord> record) {
  if (!record || record->kind() != RecordKind::Person) return nullptr;
  // Every person record is made as one: see record_factory.cpp.
  assert(dynamic_cast<const _ABPerson*>(record.get()) != nullptr);
  return std::static_pointer_cast<_ABPerson>(std::move(record));
}

std::shared_ptr<_ABPerson> recordOf(const std::shared_ptr<IOxPerson>& person) {
  return std::dynamic_pointer_cast<_ABPerson>(person);
}

RecordStampTable& _ABPerson::dictionarySave() {
  static auto& dic = *new RecordStampTable;
  return dic;
}

Text _ABPerson::ID() const {
  return uniqueId();
}

BookId _ABPerson::bookId() const {
  if (const auto stored = dictionarySave().find(key())) return *stored;
  const Text account = AccountID();
  return dictionarySave().setIfAbsent(key(), BookId::of(account ? *account : OxMacAddressBookID));
}

Text _ABPerson::addressBookID() const {
  return bookId().text();
}

void _ABPerson::setAddressID(TextView bookID) {
  if (bookID) dictionarySave().set(key(), BookId::of(*bookID));
}

Text _ABPerson::AccountID() const {
  const auto container = containerOf(*CNContactStore::init(), *this);
  return container ? OxMacAddressBook::standID(container->identifier()) : std::nullopt;
}

std::shared_ptr<OxMacAddressBook> _ABPerson::personAddressBook() const {
  if (auto book = knownBook(addressBookID())) return book;
  for (const auto& book : OxMacAddressBook::addressBookArray()) {
    if (book->ID() == addressBookID()) return book;
  }
  return nullptr;
}

}  // namespace ox
