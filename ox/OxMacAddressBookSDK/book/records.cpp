// Making and removing persons and groups, and the save.
#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"
#include "ox/OxMacAddressBookSDK/ground/tag_acts.hpp"
#include "ox/OxMacAddressBookSDK/registry/builds.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox {

std::shared_ptr<IOxPerson> OxMacAddressBook::newPerson() {
  registry::refuseWithinDiscovery();
  const auto epoch = _allPersonArray ? _allPersonArray->epoch() : 0;
  const auto contact = CNMutableContact::init();
  const auto request = CNSaveRequest::init();
  request->addContact_toContainerWithIdentifier(contact, validContainerID());
  CNContactStore::init()->executeSaveRequest_error(*request, nullptr);
  auto person = hostPerson(abAddressBook()->recordForKey(contact->key()));
  if (!person) return nullptr;
  person->setAddressID(_xxID);
  // Clearing the name or the company forgets everything that is remembered of the person, the stamp
  // of the line above included; whoever asks for the book next derives it from the container.
  // Required.
  for (const auto& property : supportProperty()) {
    if (property->name() != OxProPertyTags) {
      person->setValue_byProperty(nullptr, property);
    } else {
      // Clearing tags begins with a look for the person's book, which discovers the books and
      // derives the stamp when it has to. The look is all that is left of it: a new person has no
      // tags, and a tag file that is damaged must cost those nothing who have none.
      static_cast<void>(person->personAddressBook());
    }
  }
  if (_allPersonArray) _allPersonArray->appendNew(person, epoch);
  return person;
}

std::shared_ptr<IOxGroup> OxMacAddressBook::newGroup() {
  const auto group = CNMutableGroup::init();
  const auto request = CNSaveRequest::init();
  request->addGroup_toContainerWithIdentifier(group, validContainerID());
  CNContactStore::init()->executeSaveRequest_error(*request, nullptr);
  return hostGroup(abAddressBook()->recordForKey(group->key()));
}

std::shared_ptr<IOxGroup> OxMacAddressBook::addGroupByName(TextView name) {
  auto group = newGroup();
  if (group) group->setDisplayName(name);
  return group;
}

void OxMacAddressBook::removePersons(const Persons& persons) {
  if (_allPersonArray) _allPersonArray->removeAll(persons);
  const auto records = abAddressBook();
  changeTags([&] {
    for (const auto& each : persons) {
      const auto person = recordOf(each);
      if (!person) continue;
      if (_tagManager) _tagManager->removeForPersonID(person->ID());
      person->removeDisplayNameCache();
      records->removeRecord(person);
    }
  });
}

bool OxMacAddressBook::removeGroup(const std::shared_ptr<IOxGroup>& group) {
  if (const auto record = recordOf(group)) record->removeAllSubGroup();
  reallyRemoveOneGroup(group);
  return true;
}

void OxMacAddressBook::reallyRemoveOneGroup(const std::shared_ptr<IOxGroup>& group) {
  abAddressBook()->removeRecord(recordOf(group));
}

void OxMacAddressBook::save() {
  saveContactsAndTags();
}

}  // namespace ox
