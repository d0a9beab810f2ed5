#pragma once

#include "ox/OxAddressBookSDK/objects/OxObjectEmail.hpp"
#include "ox/base/text.hpp"

namespace ox::convert {

// Line feeds removed; null for a missing text.
inline std::shared_ptr<OxObjectEmail> emailFromStored(TextView stored) {
  return stored ? OxObjectEmail::initWithEmail(withoutLineBreaks(stored)) : nullptr;
}

inline Text storedFromEmail(const OxObjectEmail& email) {
  return email.email();
}

}  // namespace ox::convert
