// Which record a group is, what it is called, and which book holds it.
#include <cassert>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/store_path.hpp"
#include "ox/OxMacAddressBookSDK/ground/containers.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_stamp_table.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox {

std::shared_ptr<_ABGroup> hostGroup(std::shared_ptr<ABRecord> record) {
  if (!record || record->kind() != RecordKind::Group) return nullptr;
  // Every group record is made as one: see record_factory.cpp.
  assert(dynamic_cast<const _ABGroup*>(record.get()) != nullptr);
  return std::static_pointer_cast<_ABGroup>(std::move(record));
}

std::shared_ptr<_ABGroup> recordOf(const std::shared_ptr<IOxGroup>& group) {
  return std::dynamic_pointer_cast<_ABGroup>(group);
}

RecordStampTable& _ABGroup::dictionarySave() {
  static auto& dic = *new RecordStampTable;
  return dic;
}

Text _ABGroup::ID() const {
  return uniqueId();
}

BookId _ABGroup::bookId() const {
  if (const auto stored = dictionarySave().find(key())) return *stored;
  const Text account = AccountID();
  return dictionarySave().setIfAbsent(key(), BookId::of(account ? *account : OxMacAddressBookID));
}

Text _ABGroup::addressBookID() const {
  return bookId().text();
}

void _ABGroup::setAddressID(TextView bookID) {
  if (bookID) dictionarySave().set(key(), BookId::of(*bookID));
}

Text _ABGroup::AccountID() const {
  if (const auto container = containerOf(*CNContactStore::init(), *this)) {
    return OxMacAddressBook::standID(container->identifier());
  }
  const Text text = description();
  return text ? accountIdFromDescription(*text) : std::nullopt;
}

std::shared_ptr<OxMacAddressBook> _ABGroup::groupAddressBook() const {
  for (const auto& book : OxMacAddressBook::addressBookArray()) {
    if (book->ID() == addressBookID()) return book;
  }
  return nullptr;
}

Text _ABGroup::displayName() const {
  const PropertyValue stored = valueForProperty(kABGroupNameProperty);
  const auto* const name = std::get_if<Object>(&stored);
  return name && name->text() ? *name->text() : std::string();
}

void _ABGroup::setDisplayName(TextView name) {
  setValue_forProperty(Object(name ? *name : std::string_view()), kABGroupNameProperty);
}

}  // namespace ox
