#include "ox/OxMacAddressBookSDK/ground/contacts_and_tags.hpp"

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/tags/tag_hold.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"

namespace ox {
namespace {

void writeHeldTags() {
  const auto changes = TagHold::changesOfThread();
  {
    const TagHold::Pause pause;
    for (const auto& change : changes) {
      const auto manager = OxTagManager::tagManagerWithID(change.manager);
      manager->setTags_forPersonID(change.after, change.person);
    }
  }
  TagHold::forgetThose();
}

}  // namespace

SavedContactsAndTags saveContactsAndTags() {
  SavedContactsAndTags saved;
  saved.contacts = ABAddressBook::sharedAddressBook()->saveAndReturnError();
  if (saved.contacts.done) writeHeldTags();
  saved.tagsAreSafe = OxTagManager::makeDurable();
  return saved;
}

}  // namespace ox
