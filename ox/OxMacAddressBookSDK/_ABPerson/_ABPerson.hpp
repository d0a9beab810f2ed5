#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ox/OxAddressBookSDK/IOxPerson.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPersonName.hpp"
#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/OxMacAddressBookSDK/ground/host_records.hpp"
#include "ox/base/export.hpp"
#include "ox/platform/AddressBook/ABPerson.hpp"

namespace ox {

class BookId;
class OxMacAddressBook;
class RecordStampTable;
class RecordTextTable;

// A person record of the system contact store that answers the model's person interface. The record
// database makes every person record as one of these; it adds no state to the record, what the
// process remembers of it is in the tables below. See ABRecord for identity, ownership and threads.
class OX_EXPORT _ABPerson final : public ABPerson, public IOxPerson {
 public:
  explicit _ABPerson(const RecordKey& key) : ABPerson(key) {}

  // --- identity ---

  Text ID() const override;
  // Never missing: the stored one, else the account id, else "_local", stored from then on.
  Text addressBookID() const override;
  // The same as a number.
  BookId bookId() const;
  // A missing ID changes nothing.
  void setAddressID(TextView bookID);
  // The standard id of the container that holds the person; asked of the store every time.
  Text AccountID() const;
  // The first discovered book whose ID is this person's addressBookID; null when none is.
  std::shared_ptr<OxMacAddressBook> personAddressBook() const;

  // The process's tables: book of each person, display names, pinyin. Live until the process ends.
  static RecordStampTable& dictionarySave();
  static RecordTextTable& dictionaryNameSave();
  static RecordTextTable& dictionaryPinyinSave();

  // --- names ---

  // Never missing, remembered: the name if the person has any name part, even an empty one, else
  // the company, else empty.
  Text displayName() const override;
  // Never missing, remembered: the display name in upper-case Latin letters.
  Text nameChineesPinyin() const override;
  // Missing for a missing text.
  Text transformChinese(TextView text) const;
  // Forgets what is remembered of the display name, the pinyin and the book.
  void removeDisplayNameCache();

  // --- property access ---

  OxValuePtr valueByProperty(const OxPropertyPtr& property) const override;
  OxValuePtr valueByPropertyName(TextView name) const override;
  void setValue_byProperty(const OxValuePtr& value, const OxPropertyPtr& property) override;
  void setValue_byPropertyName(const OxValuePtr& value, TextView name) override;
  std::vector<OxPropertyPtr> notNullValueProperty() const override;

  // The name parts without line feeds; never null, also when every part is missing.
  std::shared_ptr<OxMutableSingleValue> nameValue() const;
  void setNameValue(const std::shared_ptr<OxMutableSingleValue>& value);
  // The decoded picture; null without one, and when it cannot be read or decoded.
  std::shared_ptr<OxMutableSingleValue> thumbnailValue() const;
  // Stored as TIFF; a value without picture removes it.
  void setThumbnailValue(const std::shared_ptr<OxMutableSingleValue>& value);
  // Null when the person has no tags.
  std::shared_ptr<OxMutableSingleValue> tagsValue() const;
  void setTagsValue(const std::shared_ptr<OxMutableSingleValue>& value);

  // --- tags, picture, main values, groups ---

  std::vector<std::string> tagArray() const override;
  void addTag(TextView tag) override;
  void removeTag(TextView tag) override;
  void setTags(const std::optional<std::vector<std::string>>& tags) override;
  // Removes the first ones, then adds the others, many at the cost of one.
  void changeTags(const std::vector<std::string>& removed, const std::vector<std::string>& added);
  ImagePtr thumbnail() const override;
  void setThumbnail(const ImagePtr& image) override;
  std::shared_ptr<const OxObjectPhone> mainPhone() const override;
  std::shared_ptr<const OxObjectEmail> mainEmail() const override;
  Groups groups() const override;

  // --- vCard ---

  // The picture as a vCard line of its own, freshly encoded as JPEG, unfolded, without a line end;
  // missing without a picture that can be decoded.
  Text vcardImageDataString() const;
  // The record's vCard with that line in it; the record's vCard as it is when there is no such line
  // or no place for it; null when there is no such record any more.
  Data newCreateVcard() const;

  // --- names of properties and labels ---

  // A name that no row of the tables has comes back unchanged; missing stays missing.
  Text macPropertyNameByName(TextView name) const;
  Text propertyNameByMacName(TextView name) const;
  Text labelDisplayNameByName(TextView name) const;

  // --- values of the store and of the model ---

  // Null for a missing value.
  std::shared_ptr<OxMutableSingleValue> singleValueByMacValue_label_type(
      const Object& value, const std::shared_ptr<OxLabel>& label, std::int32_t type) const;
  std::shared_ptr<OxMutableSingleValue> singleValueByMacValue_property(
      const Object& value, const OxPropertyPtr& property) const;
  // Never null.
  std::shared_ptr<OxMutableMultipleValue> multipleValueByMacValue_property(
      const MultiValuePtr& value, const OxPropertyPtr& property) const;
  // What is to be written to the record; missing when that holds nothing.
  PropertyValue macValueByOxValue_property(const OxValuePtr& value,
                                           const OxPropertyPtr& property) const;

  // One element; a missing one gives null or missing.
  std::shared_ptr<OxObjectPhone> converterPhoneValueFromMacValue(TextView value) const;
  Text converterPhoneValueToMacValue(const std::shared_ptr<const OxObjectPhone>& value) const;
  std::shared_ptr<OxObjectEmail> converterEmailValueFromMacValue(TextView value) const;
  Text converterEmailValueToMacValue(const std::shared_ptr<const OxObjectEmail>& value) const;
  std::shared_ptr<OxObjectAddress> converterAddressValueFromMacValue(
      const Object::DictionaryPtr& value) const;
  std::shared_ptr<Dictionary> converterAddressValueToMacValue(
      const std::shared_ptr<const OxObjectAddress>& value) const;
  std::shared_ptr<OxObjectInstantMessage> converterInstantValueFromMacValue(
      const Object::DictionaryPtr& value) const;
  std::shared_ptr<Dictionary> converterInstantValueToMacValue(
      const std::shared_ptr<const OxObjectInstantMessage>& value) const;

  // The main element of a multi-valued property; null when it has none.
  std::shared_ptr<OxMutableSingleValue> mainValueForProPertyName(TextView name) const;
  Object valueOfMainValueForProPertyName(TextView name) const;

 private:
  void setSpecialValue(const OxValuePtr& value, std::string_view name);
};

}  // namespace ox
