#include "ox/OxMacAddressBookSDK/_ABPerson/convert/elements.hpp"

#include "ox/OxAddressBookSDK/properties/value_types.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/address.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/email.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/instant_message.hpp"
#include "ox/OxMacAddressBookSDK/_ABPerson/convert/phone.hpp"

namespace ox::convert {
namespace {

TextView textOf(const Object& object) {
  return object.text() ? TextView(*object.text()) : TextView();
}

// What the writer makes of the element when it is a T, else missing.
template <typename T, typename Writer>
Object written(const Object& element, Writer writer) {
  const auto held = element.host<T>();
  return held ? Object(writer(*held)) : Object();
}

}  // namespace

Object elementFromStored(const Object& stored, std::int32_t type) {
  switch (type) {
    case value_type::kPhone:
      return phoneFromStored(textOf(stored));
    case value_type::kEmail:
      return emailFromStored(textOf(stored));
    case value_type::kAddress:
      return stored.dictionary() ? Object(addressFromStored(*stored.dictionary())) : Object();
    case value_type::kInstantMessage:
      return stored.dictionary() ? Object(instantMessageFromStored(*stored.dictionary()))
                                 : Object();
    default:
      return stored;
  }
}

bool fitsElementType(const Object& element, std::int32_t type) {
  if (element.isMissing()) return true;
  switch (type) {
    case value_type::kPhone:
      return element.host<OxObjectPhone>() != nullptr;
    case value_type::kEmail:
      return element.host<OxObjectEmail>() != nullptr;
    case value_type::kAddress:
      return element.host<OxObjectAddress>() != nullptr;
    case value_type::kInstantMessage:
      return element.host<OxObjectInstantMessage>() != nullptr;
    default:
      return true;
  }
}

Object storedFromElement(const Object& element, std::int32_t type) {
  switch (type) {
    case value_type::kPhone:
      return written<OxObjectPhone>(element, storedFromPhone);
    case value_type::kEmail:
      return written<OxObjectEmail>(element, storedFromEmail);
    case value_type::kAddress:
      return written<OxObjectAddress>(element, storedFromAddress);
    case value_type::kInstantMessage:
      return written<OxObjectInstantMessage>(element, storedFromInstantMessage);
    case value_type::kString:
      return element.text() && element.text()->empty() ? Object() : element;
    default:
      return element;
  }
}

}  // namespace ox::convert
