#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ox/OxAddressBookSDK/tags/OxTagManager.hpp"
#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_stamp_table.hpp"
#include "ox/OxMacAddressBookSDK/tables/record_text_table.hpp"
#include "ox/platform/AddressBook/ABAddressBook.hpp"
#include "ox/platform/Contacts/CNContactStore.hpp"
#include "tests/support/sequence.hpp"
#include "tests/support/store_builder.hpp"
#include "tests/support/store_environment.hpp"
#include "tests/support/switched_source.hpp"

namespace ox::test {

using support::PersonValues;
using support::Sequence;
using support::StoreBuilder;
using support::SwitchedSource;

inline std::shared_ptr<_ABPerson> person(std::string_view id) {
  return hostPerson(ABAddressBook::sharedAddressBook()->recordForUniqueId(id));
}

inline std::shared_ptr<_ABGroup> group(std::string_view id) {
  return hostGroup(ABAddressBook::sharedAddressBook()->recordForUniqueId(id));
}

// The first discovered book of that ID; null when there is none.
inline std::shared_ptr<OxMacAddressBook> bookNamed(std::string_view id) {
  for (const auto& book : OxMacAddressBook::addressBookArray()) {
    if (book->ID() == id) return book;
  }
  return nullptr;
}

// A person "p" with these values, alone in the local container.
inline std::shared_ptr<_ABPerson> newPersonWith(const PersonValues& values) {
  StoreBuilder().person("p", values);
  return person("p");
}

// A container as a query would give it, not stored.
inline CNContainerPtr containerOf(const std::string& identifier, const std::string& name,
                                  std::int32_t type) {
  return std::make_shared<const CNContainer>(
      std::make_shared<const ContainerInfo>(ContainerInfo{identifier, name, type}));
}

// IDs separated by blanks, in order; null ones as "-".
template <typename List>
std::string idsOf(const List& list) {
  std::string text;
  for (const auto& each : list) {
    if (!text.empty()) text += ' ';
    text += each ? each->ID().value_or("(missing)") : "-";
  }
  return text;
}

inline std::string cachedIn(const OxMacAddressBook& book) {
  return book.allPersonArray() ? idsOf(book.allPersonArray()->snapshot()) : "no cache";
}

// One single value of that type, without label.
inline std::shared_ptr<OxMutableSingleValue> single(const Object& value, std::int32_t type) {
  auto element = OxMutableSingleValue::init();
  element->setValue(value);
  element->setType(type);
  return element;
}

// A multiple value of one phone, the main one.
inline std::shared_ptr<OxMutableMultipleValue> onePhone(const std::string& number) {
  auto phones = OxMutableMultipleValue::init();
  phones->addValue(single(OxObjectPhone::initWithPhoneNumber(number), value_type::kPhone));
  phones->setMainValue(phones->valueAtIndex(0));
  return phones;
}

inline OxPropertyPtr property(std::string_view name) {
  return OxProperty::propertyWithName(name);
}

}  // namespace ox::test
