// What a person answers without a property: the main phone and e-mail address, the groups.
#include "ox/OxMacAddressBookSDK/_ABGroup/_ABGroup.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"

namespace ox {

std::shared_ptr<const OxObjectPhone> _ABPerson::mainPhone() const {
  return valueOfMainValueForProPertyName(OxProPertyPhone).host<OxObjectPhone>();
}

std::shared_ptr<const OxObjectEmail> _ABPerson::mainEmail() const {
  return valueOfMainValueForProPertyName(OxProPertyEmail).host<OxObjectEmail>();
}

Groups _ABPerson::groups() const {
  Groups groups;
  for (auto& group : parentGroups()) groups.push_back(hostGroup(std::move(group)));
  return groups;
}

}  // namespace ox
