// Copying persons and contacts into a book.
#include "ox/OxAddressBookSDK/values/OxMutableSingleValue.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/registry/builds.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"

namespace ox {
namespace {

// True when the value holds nothing, or a text that says nothing.
bool saysNothing(const OxMutableSingleValue& value) {
  const auto* const text = value.value().text();
  return value.value().isMissing() || (text != nullptr && text->empty());
}

std::shared_ptr<IOxPerson> addContact(OxMacAddressBook& book, const CNContact& contact) {
  registry::refuseWithinDiscovery();
  const auto copy = CNMutableContact::mutableCopy(contact);
  const auto request = CNSaveRequest::init();
  request->addContact_toContainerWithIdentifier(copy, book.validContainerID());
  // Only a stored copy has an identifier of its own: until then it bears that of its source.
  if (!CNContactStore::init()->executeSaveRequest_error(*request, nullptr)) return nullptr;
  const std::shared_ptr<IOxPerson> person =
      hostPerson(book.abAddressBook()->recordForKey(copy->key()));
  for (const auto& property : book.supportProperty()) {
    if (property->valueType() == value_type::kMultiple) continue;
    book.needSingValueClearValue_property(person, property);
  }
  return person;
}

std::shared_ptr<IOxPerson> addPerson(OxMacAddressBook& book, const IOxPerson& source) {
  auto person = book.newPerson();
  if (!person) return nullptr;
  bool copied = false;
  for (const auto& property : book.supportProperty()) {
    const auto value = source.valueByProperty(property);
    if (!value) continue;
    person->setValue_byProperty(value, property);
    copied = true;
  }
  return copied ? person : nullptr;
}

}  // namespace

std::shared_ptr<IOxPerson> OxMacAddressBook::addOneFromOtherPerson(
    const std::shared_ptr<IOxPerson>& source) {
  return source ? addPerson(*this, *source) : nullptr;
}

std::shared_ptr<IOxPerson> OxMacAddressBook::addOneFromOtherPerson(const CNContactPtr& source) {
  return source ? addContact(*this, *source) : nullptr;
}

void OxMacAddressBook::needSingValueClearValue_property(const std::shared_ptr<IOxPerson>& person,
                                                        const OxPropertyPtr& property) {
  if (!person || !property) return;
  const auto value = person->valueByProperty(property);
  if (!value) return;
  const auto& name = property->name();
  if (name == OxProPertyName || name == OxProPertyBirthday || name == OxProPertyTags) return;
  const auto single = std::dynamic_pointer_cast<OxMutableSingleValue>(value);
  if (single && saysNothing(*single)) person->setValue_byProperty(nullptr, property);
}

}  // namespace ox
