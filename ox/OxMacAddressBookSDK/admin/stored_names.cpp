#include "ox/OxMacAddressBookSDK/admin/stored_names.hpp"

#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/name_tables.hpp"

namespace ox {

std::string propertyNameOfStored(std::string_view storeName) {
  return std::string(names::propertyNameOf(storeName));
}

std::string propertyTitleOfStored(std::string_view storeName) {
  const auto name = names::propertyNameOf(storeName);
  for (const auto& property : OxProperty::StandardPropertyArray()) {
    if (property->name() == name) return property->displayName();
  }
  return std::string(name);
}

std::string labelTitleOfStored(std::string_view labelKey) {
  return std::string(names::labelWordOf(labelKey));
}

}  // namespace ox
