// The properties that a book supports, and the common ones.
#include <array>

#include "ox/OxMacAddressBookSDK/OxMacAddressBook.hpp"

namespace ox {
namespace {

constexpr std::array kCommonNames = {
    OxProPertyThumbnail, OxProPertyName,     OxProPertyTags,    OxProPertyPhone, OxProPertyEmail,
    OxProPertyCompany,   OxProPertyBirthday, OxProPertyAddress, OxProPertyNote,
};

std::vector<OxPropertyPtr> commonProperties() {
  std::vector<OxPropertyPtr> properties;
  properties.reserve(kCommonNames.size());
  for (const auto name : kCommonNames) properties.push_back(OxProperty::propertyWithName(name));
  return properties;
}

}  // namespace

const std::vector<OxPropertyPtr>& OxMacAddressBook::supportProperty() const {
  return OxProperty::StandardPropertyArray();
}

const std::vector<OxPropertyPtr>& OxMacAddressBook::CommonProperty() {
  static const auto& s_commonArray = *new std::vector<OxPropertyPtr>(commonProperties());
  return s_commonArray;
}

}  // namespace ox
