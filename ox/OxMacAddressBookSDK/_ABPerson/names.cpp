// The name tables as operations of a person.
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/name_tables.hpp"

namespace ox {

Text _ABPerson::macPropertyNameByName(TextView name) const {
  return name ? Text(names::storeNameOf(*name)) : std::nullopt;
}

Text _ABPerson::propertyNameByMacName(TextView name) const {
  return name ? Text(names::propertyNameOf(*name)) : std::nullopt;
}

Text _ABPerson::labelDisplayNameByName(TextView name) const {
  return name ? Text(names::labelWordOf(*name)) : std::nullopt;
}

}  // namespace ox
