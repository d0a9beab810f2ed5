// Every operation that the contract of the model names, by the signature that callers rely on. A
// renamed or lost one does not compile.
#include <gtest/gtest.h>
#include <type_traits>

#include "ox/OxAddressBookSDK/IOxGroup.hpp"
#include "ox/OxAddressBookSDK/IOxPerson.hpp"
#include "ox/OxAddressBookSDK/OxAddressBook.hpp"
#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"
#include "ox/OxAddressBookSDK/objects/OxCountry.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"

namespace ox {
namespace {

template <typename... Operations>
constexpr bool allNamed(Operations...) {
  return (... && !std::is_same_v<Operations, std::nullptr_t>);
}

static_assert(allNamed(&IOxPerson::ID, &IOxPerson::addressBookID, &IOxPerson::displayName,
                       &IOxPerson::valueByProperty, &IOxPerson::valueByPropertyName,
                       &IOxPerson::setValue_byProperty, &IOxPerson::setValue_byPropertyName,
                       &IOxPerson::thumbnail, &IOxPerson::setThumbnail, &IOxPerson::mainPhone,
                       &IOxPerson::mainEmail, &IOxPerson::groups, &IOxPerson::notNullValueProperty,
                       &IOxPerson::tagArray, &IOxPerson::addTag, &IOxPerson::removeTag,
                       &IOxPerson::setTags, &IOxPerson::nameChineesPinyin));
static_assert(allNamed(&IOxGroup::ID, &IOxGroup::subGroupsCount, &IOxGroup::addressBookID,
                       &IOxGroup::setDisplayName, &IOxGroup::displayName, &IOxGroup::subGroups,
                       &IOxGroup::persons, &IOxGroup::includePersons,
                       &IOxGroup::includePersonsCount, &IOxGroup::addSubGroupByName,
                       &IOxGroup::removeSubGroup, &IOxGroup::removePersons,
                       &IOxGroup::removePersonsFromThisGroup, &IOxGroup::addPersons,
                       &IOxGroup::removePersons_progress, &IOxGroup::addPersons_progress));
static_assert(
    allNamed(&OxAddressBook::ID, &OxAddressBook::name, &OxAddressBook::canCreateGroup,
             &OxAddressBook::canCreateSubGroup, &OxAddressBook::canOprate,
             &OxAddressBook::isInternetAdressBook, &OxAddressBook::thumbnail, &OxAddressBook::logo1,
             &OxAddressBook::logo2, &OxAddressBook::logo3, &OxAddressBook::logo4,
             &OxAddressBook::allPersons, &OxAddressBook::allPersonsCount, &OxAddressBook::allGroups,
             &OxAddressBook::rootGroups, &OxAddressBook::rootGroupsCount, &OxAddressBook::groupByID,
             &OxAddressBook::personsForIDs, &OxAddressBook::newPerson, &OxAddressBook::newGroup,
             &OxAddressBook::addGroupByName, &OxAddressBook::addOneFromOtherPerson,
             &OxAddressBook::removePersons, &OxAddressBook::removeGroup, &OxAddressBook::tagManager,
             &OxAddressBook::supportProperty, &OxAddressBook::commonProperty, &OxAddressBook::save,
             &OxAddressBook::sync, &OxAddressBook::update,
             &OxAddressBook::loadWithData_progressBlock, &OxAddressBook::saveDataBlock));
static_assert(allNamed(&OxProperty::propertyWithName, &OxProperty::StandardPropertyArray,
                       &OxProperty::name, &OxProperty::displayName, &OxProperty::valueType,
                       &OxProperty::subValueType));
static_assert(allNamed(&OxMutableSingleValue::init, &OxMutableSingleValue::value,
                       &OxMutableSingleValue::setValue, &OxMutableSingleValue::label,
                       &OxMutableSingleValue::setLabel, &OxMutableSingleValue::type,
                       &OxMutableSingleValue::setType));
static_assert(allNamed(&OxMutableMultipleValue::init, &OxMutableMultipleValue::type,
                       &OxMutableMultipleValue::count, &OxMutableMultipleValue::addValue,
                       &OxMutableMultipleValue::valueAtIndex, &OxMutableMultipleValue::indexOfValue,
                       &OxMutableMultipleValue::mainValue, &OxMutableMultipleValue::setMainValue));
static_assert(allNamed(&OxLabel::init, &OxLabel::name, &OxLabel::setName, &OxLabel::displayName,
                       &OxLabel::setDisplayName));
static_assert(allNamed(&OxObjectPhone::initWithPhoneNumber, &OxObjectPhone::phoneNumber,
                       &OxObjectEmail::initWithEmail, &OxObjectEmail::email));
static_assert(allNamed(&OxObjectAddress::init, &OxObjectAddress::setCountryCode,
                       &OxObjectAddress::countryCode, &OxObjectAddress::setStringValue_forFieldName,
                       &OxObjectAddress::stringValueByFieldName));
static_assert(allNamed(&OxObjectInstantMessage::initWithUserName_server,
                       &OxObjectInstantMessage::userName, &OxObjectInstantMessage::server,
                       &OxInstantMessageServer::serverWithName, &OxInstantMessageServer::name));
static_assert(allNamed(&OxObjectPersonName::initWithFirst_middle_last, &OxObjectPersonName::first,
                       &OxObjectPersonName::middle, &OxObjectPersonName::last,
                       &OxObjectPersonName::displayString));
static_assert(allNamed(&OxCountry::local, &OxCountry::code));
static_assert(allNamed(&OxTagManager::tagManagerWithID, &OxTagManager::tagsByPersonID,
                       &OxTagManager::addPersonID_forTag, &OxTagManager::removePersonID_fromTag,
                       &OxTagManager::setTags_forPersonID, &OxTagManager::removeForPersonID));
static_assert(allNamed(&OxAddressBookGeneral::init, &OxAddressBookGeneral::groupsDic,
                       &OxAddressBookGeneral::personsDic, &OxAddressBookGeneral::addGroup,
                       &OxAddressBookGeneral::addPerson, &OxAddressBookGeneral::saveToData,
                       &OxAddressBookGeneral::addressBookWithData));
static_assert(allNamed(&OxGeneralGroup::title, &OxGeneralGroup::subArray, &OxGeneralGroup::persons,
                       &OxGeneralGroup::extend, &OxGeneralGroup::setExtend,
                       &OxGeneralPerson::extend, &OxGeneralPerson::setExtend));

// The addresses above are the test; this case makes the file appear in the list of what ran.
TEST(GivenOperations, HostValuesAreToldApartByTypeThroughTheirCommonBase) {
  const OxValuePtr multiple = OxMutableMultipleValue::init();
  const OxValuePtr single = OxMutableSingleValue::init();
  EXPECT_EQ(multiple->type(), 12);
  EXPECT_EQ(single->type(), 0);
}

}  // namespace
}  // namespace ox
