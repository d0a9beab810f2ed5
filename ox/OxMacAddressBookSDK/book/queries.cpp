// Which persons and groups a book holds.
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/ground/containers.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox {

std::shared_ptr<PersonList> OxMacAddressBook::allPersons() {
  if (_allPersonArray && _allPersonArray->size() > 0) return _allPersonArray;
  if (!_container) return allPersons2();
  // One fill is enough, unless another thread empties the cache before the persons are in it: what
  // was fetched is then stale and is dropped, and the store is asked again.
  while (!fillCache().empty() && _allPersonArray->size() == 0) continue;
  return _allPersonArray;
}

Persons OxMacAddressBook::fillCache() {
  const auto epoch = _allPersonArray->epoch();
  std::vector<RecordKey> keys;
  for (const auto& contact : contactsIn(*CNContactStore::init(), *_container)) {
    keys.push_back(contact->key());
  }
  Persons persons;
  for (const auto& record : abAddressBook()->recordsForKeys(keys)) {
    auto person = hostPerson(record);
    if (!person) continue;
    person->setAddressID(_xxID);
    persons.push_back(std::move(person));
  }
  _allPersonArray->fill(persons, epoch);
  return persons;
}

std::shared_ptr<PersonList> OxMacAddressBook::allPersons2() {
  if (!_allPersonArray) return nullptr;
  Persons persons;
  for (const auto& record : abAddressBook()->people()) {
    auto person = hostPerson(record);
    if (person->addressBookID() == _xxID) persons.push_back(std::move(person));
  }
  _allPersonArray->append(persons);
  return _allPersonArray;
}

std::uint64_t OxMacAddressBook::allPersonsCount() {
  const auto persons = allPersons();
  return persons ? persons->size() : 0;
}

Groups OxMacAddressBook::allGroups() const {
  Groups groups;
  if (!canCreateGroup()) return groups;
  for (const auto& record : abAddressBook()->groups()) {
    auto group = hostGroup(record);
    if (group->addressBookID() == _xxID) groups.push_back(std::move(group));
  }
  return groups;
}

Groups OxMacAddressBook::rootGroups() const {
  Groups groups;
  if (!canCreateGroup()) return groups;
  for (const auto& record : abAddressBook()->groups()) {
    if (!record->parentGroups().empty()) continue;
    auto group = hostGroup(record);
    if (group->addressBookID() == _xxID) groups.push_back(std::move(group));
  }
  return groups;
}

std::uint64_t OxMacAddressBook::rootGroupsCount() const {
  return rootGroups().size();
}

std::shared_ptr<IOxGroup> OxMacAddressBook::groupByID(TextView identifier) const {
  auto group = hostGroup(abAddressBook()->recordForUniqueId(identifier));
  return group && group->addressBookID() == _xxID ? group : nullptr;
}

std::vector<OxRecord> OxMacAddressBook::personsForIDs(
    const std::vector<std::string>& identifiers) const {
  std::vector<OxRecord> found;
  for (const auto& record : abAddressBook()->recordsForUniqueIds(identifiers)) {
    if (auto person = hostPerson(record)) {
      found.emplace_back(std::shared_ptr<IOxPerson>(std::move(person)));
    } else if (auto group = hostGroup(record)) {
      found.emplace_back(std::shared_ptr<IOxGroup>(std::move(group)));
    }
  }
  return found;
}

}  // namespace ox
