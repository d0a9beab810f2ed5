// Takes the address of every operation that hosts call by name: that this file compiles is the
// test.
#include <gtest/gtest.h>

#include "tests/OxMacAddressBookSDK/fixtures.hpp"

namespace ox {
namespace {

// Class operations have a type of plain functions, instance operations one of members.
template <auto... operations>
constexpr bool areClassOperations() {
  return (std::is_pointer_v<decltype(operations)> && ...);
}

template <auto... operations>
constexpr bool areInstanceOperations() {
  return (std::is_member_function_pointer_v<decltype(operations)> && ...);
}

using Book = OxMacAddressBook;

static_assert(areClassOperations<
              &Book::addressBookArray, &Book::addressBookArrayWithProgressBlock,
              &Book::addressBookArrayWithProgressBlock2, &Book::addressBookArray2,
              &Book::addressBookArray3, &Book::ShareAddressBook, &Book::SystemVersionAbove10_11,
              &Book::SystemVersionAbove10_13, &Book::addressArrayQueue, &Book::resetGAddressArray,
              &Book::standID, &Book::standABPersonID, &Book::needAddAdreessBook_ab_store,
              &Book::hasContainerArray_addressArray, &Book::hasAddress_container,
              &Book::CommonProperty, &Book::initWithContainer, &Book::initWithID, &Book::init,
              &_ABGroup::dictionarySave, &_ABGroup::personFromGroup, &_ABPerson::dictionarySave,
              &_ABPerson::dictionaryNameSave, &_ABPerson::dictionaryPinyinSave>());

static_assert(
    areInstanceOperations<
        &Book::initNameAndType, &Book::abAddressBook, &Book::ID, &Book::name,
        &Book::validContainerID, &Book::tagManager, &Book::canCreateGroup, &Book::canCreateSubGroup,
        &Book::canOprate, &Book::isInternetAdressBook, &Book::thumbnail, &Book::logo1, &Book::logo2,
        &Book::logo3, &Book::logo4, &Book::loadImageWithName_type, &Book::allPersons,
        &Book::allPersons2, &Book::allPersonsCount, &Book::allGroups, &Book::rootGroups,
        &Book::rootGroupsCount, &Book::groupByID, &Book::personsForIDs, &Book::supportProperty,
        &Book::commonProperty, &Book::newPerson, &Book::newGroup, &Book::addGroupByName,
        &Book::removePersons, &Book::removeGroup, &Book::reallyRemoveOneGroup, &Book::save,
        &Book::sync, &Book::update,
        static_cast<std::shared_ptr<IOxPerson> (Book::*)(const std::shared_ptr<IOxPerson>&)>(
            &Book::addOneFromOtherPerson),
        static_cast<std::shared_ptr<IOxPerson> (Book::*)(const CNContactPtr&)>(
            &Book::addOneFromOtherPerson),
        &Book::needSingValueClearValue_property, &Book::loadWithData_progressBlock,
        &Book::saveDataBlock, &Book::loadThreed, &Book::saveDataThreed, &Book::clearAddressBook,
        &Book::addGroupAndPersonByGeneralAddressBook,
        &Book::adjustGroupAndPersonRelatedByGeneralAddressBook>());

static_assert(
    areInstanceOperations<
        &_ABGroup::ID, &_ABGroup::setAddressID, &_ABGroup::addressBookID, &_ABGroup::AccountID,
        &_ABGroup::groupAddressBook, &_ABGroup::displayName, &_ABGroup::setDisplayName,
        &_ABGroup::subGroups, &_ABGroup::subGroupsCount, &_ABGroup::persons,
        &_ABGroup::includePersons, &_ABGroup::includePersonsCount, &_ABGroup::addSubGroupByName,
        &_ABGroup::removeSubGroup, &_ABGroup::removeAllSubGroup, &_ABGroup::addPersons,
        &_ABGroup::addPersons_progress, &_ABGroup::removePersonsFromThisGroup,
        &_ABGroup::removePersons, &_ABGroup::removePersonsOfSubGroup,
        &_ABGroup::removePersons_progress, &_ABGroup::removePersonsPrivate_progress>());

static_assert(
    areInstanceOperations<
        &_ABPerson::ID, &_ABPerson::setAddressID, &_ABPerson::addressBookID, &_ABPerson::AccountID,
        &_ABPerson::personAddressBook, &_ABPerson::displayName, &_ABPerson::nameChineesPinyin,
        &_ABPerson::transformChinese, &_ABPerson::removeDisplayNameCache, &_ABPerson::tagArray,
        &_ABPerson::addTag, &_ABPerson::removeTag, &_ABPerson::setTags, &_ABPerson::thumbnail,
        &_ABPerson::setThumbnail, &_ABPerson::vcardImageDataString, &_ABPerson::newCreateVcard,
        &_ABPerson::mainPhone, &_ABPerson::mainEmail, &_ABPerson::groups,
        &_ABPerson::macPropertyNameByName, &_ABPerson::propertyNameByMacName,
        &_ABPerson::labelDisplayNameByName, &_ABPerson::singleValueByMacValue_label_type,
        &_ABPerson::singleValueByMacValue_property, &_ABPerson::multipleValueByMacValue_property,
        &_ABPerson::macValueByOxValue_property, &_ABPerson::converterPhoneValueFromMacValue,
        &_ABPerson::converterPhoneValueToMacValue, &_ABPerson::converterEmailValueFromMacValue,
        &_ABPerson::converterEmailValueToMacValue, &_ABPerson::converterAddressValueFromMacValue,
        &_ABPerson::converterAddressValueToMacValue, &_ABPerson::converterInstantValueFromMacValue,
        &_ABPerson::converterInstantValueToMacValue, &_ABPerson::mainValueForProPertyName,
        &_ABPerson::valueOfMainValueForProPertyName, &_ABPerson::valueByProperty,
        &_ABPerson::valueByPropertyName, &_ABPerson::setValue_byProperty,
        &_ABPerson::setValue_byPropertyName, &_ABPerson::notNullValueProperty,
        &_ABPerson::nameValue, &_ABPerson::setNameValue, &_ABPerson::thumbnailValue,
        &_ABPerson::setThumbnailValue, &_ABPerson::tagsValue, &_ABPerson::setTagsValue>());

TEST(GivenOperations, AreThoseOfTheModelsInterfacesOnRecords) {
  static_assert(std::is_base_of_v<IOxPerson, _ABPerson> && std::is_base_of_v<ABPerson, _ABPerson>);
  static_assert(std::is_base_of_v<IOxGroup, _ABGroup> && std::is_base_of_v<ABGroup, _ABGroup>);
  static_assert(std::is_base_of_v<OxAddressBook, OxMacAddressBook>);
  // No state of their own beside the record's.
  EXPECT_EQ(sizeof(_ABPerson), sizeof(ABPerson) + sizeof(IOxPerson));
  EXPECT_EQ(sizeof(_ABGroup), sizeof(ABGroup) + sizeof(IOxGroup));
}

}  // namespace
}  // namespace ox
