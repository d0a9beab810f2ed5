// The converters of single elements as operations of a person; convert/ does the work.
#include "ox/OxMacAddressBookSDK/_ABPerson/_ABPerson.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/address.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/email.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/instant_message.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/phone.hpp"

namespace ox {

std::shared_ptr<OxObjectPhone> _ABPerson::converterPhoneValueFromMacValue(TextView value) const {
  return convert::phoneFromStored(value);
}

Text _ABPerson::converterPhoneValueToMacValue(
    const std::shared_ptr<const OxObjectPhone>& value) const {
  return value ? convert::storedFromPhone(*value) : std::nullopt;
}

std::shared_ptr<OxObjectEmail> _ABPerson::converterEmailValueFromMacValue(TextView value) const {
  return convert::emailFromStored(value);
}

Text _ABPerson::converterEmailValueToMacValue(
    const std::shared_ptr<const OxObjectEmail>& value) const {
  return value ? convert::storedFromEmail(*value) : std::nullopt;
}

std::shared_ptr<OxObjectAddress> _ABPerson::converterAddressValueFromMacValue(
    const Object::DictionaryPtr& value) const {
  return value ? convert::addressFromStored(*value) : nullptr;
}

std::shared_ptr<Dictionary> _ABPerson::converterAddressValueToMacValue(
    const std::shared_ptr<const OxObjectAddress>& value) const {
  return value ? convert::storedFromAddress(*value) : nullptr;
}

std::shared_ptr<OxObjectInstantMessage> _ABPerson::converterInstantValueFromMacValue(
    const Object::DictionaryPtr& value) const {
  return value ? convert::instantMessageFromStored(*value) : nullptr;
}

std::shared_ptr<Dictionary> _ABPerson::converterInstantValueToMacValue(
    const std::shared_ptr<const OxObjectInstantMessage>& value) const {
  return value ? convert::storedFromInstantMessage(*value) : nullptr;
}

}  // namespace ox
