// How a book is made, which service it belongs to, and what that allows.
#include <algorithm>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/ground/service_types.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContainer.hpp"

namespace ox {
namespace {

// The store does not know the property of the host's "other" entries by itself.
void registerOtherProperty() {
  const auto known = ABPerson::properties();
  if (std::find(known.begin(), known.end(), OxMacOtherProperty) != known.end()) return;
  ABPerson::addPropertiesAndTypes({{std::string(OxMacOtherProperty), kABMultiStringProperty}});
}
static_assert(kABMultiStringProperty == 257);

}  // namespace

std::shared_ptr<OxMacAddressBook> OxMacAddressBook::initWithContainer(
    const CNContainerPtr& container) {
  auto book = std::make_shared<OxMacAddressBook>(Key());
  book->_container = container;
  book->_allPersonArray = std::make_shared<PersonList>();
  book->initNameAndType(container);
  book->_xxID = standID(container ? container->identifier() : std::nullopt);
  book->_tagManager = OxTagManager::tagManagerWithID(book->_xxID);
  registerOtherProperty();
  return book;
}

std::shared_ptr<OxMacAddressBook> OxMacAddressBook::initWithID(TextView identifier) {
  auto book = std::make_shared<OxMacAddressBook>(Key());
  book->_xxID = identifier.toText();
  book->_serverType = identifier == OxMacAddressBookID ? services::kLocal : services::kOther;
  book->_tagManager = OxTagManager::tagManagerWithID(identifier);
  registerOtherProperty();
  return book;
}

std::shared_ptr<OxMacAddressBook> OxMacAddressBook::listedWithID(TextView identifier) {
  auto book = initWithID(identifier);
  const bool local = book->_serverType == services::kLocal;
  book->_xxName = local ? Text(services::kLocalName) : book->_xxID;
  return book;
}

std::shared_ptr<OxMacAddressBook> OxMacAddressBook::init() {
  auto book = std::make_shared<OxMacAddressBook>(Key());
  book->_tagManager = OxTagManager::tagManagerWithID(OxMacAddressBookTagsID);
  registerOtherProperty();
  return book;
}

void OxMacAddressBook::initNameAndType(const CNContainerPtr& container) {
  _xxName = container ? container->name() : std::nullopt;
  _serverType = services::kOther;
  if (!container) return;
  if (container->type() == CNContainerTypeCardDAV) {
    if (const auto* const service = services::serviceOfContainerNamed(_xxName.value_or(""))) {
      _xxName = service->name;
      _serverType = service->type;
    }
  } else if (container->type() == CNContainerTypeLocal) {
    _xxName = services::kLocalName;
    _serverType = services::kLocal;
  }
  // A native Exchange container is one of the other services: only a CardDAV one named "Exchange"
  // is listed as Exchange.
}

std::shared_ptr<ABAddressBook> OxMacAddressBook::abAddressBook() const {
  return ABAddressBook::sharedAddressBook();
}

Text OxMacAddressBook::validContainerID() const {
  return _container ? _container->identifier() : ID();
}

bool OxMacAddressBook::canCreateGroup() const {
  return _serverType != services::kGoogle && _serverType != services::kFacebook;
}

bool OxMacAddressBook::canCreateSubGroup() const {
  return _serverType != services::kGoogle && _serverType != services::kQQ &&
         _serverType != services::kFacebook;
}

bool OxMacAddressBook::canOprate() const {
  return _serverType != services::kFacebook;
}

}  // namespace ox
