#pragma once

#include "ox/OxAddressBookSDK/objects/OxObjectPhone.hpp"
#include "ox/base/text.hpp"

namespace ox::convert {

// Line feeds removed; null for a missing text.
inline std::shared_ptr<OxObjectPhone> phoneFromStored(TextView stored) {
  return stored ? OxObjectPhone::initWithPhoneNumber(withoutLineBreaks(stored)) : nullptr;
}

inline Text storedFromPhone(const OxObjectPhone& phone) {
  return phone.phoneNumber();
}

}  // namespace ox::convert
