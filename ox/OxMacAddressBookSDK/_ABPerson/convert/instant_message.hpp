#pragma once

#include "ox/OxAddressBookSDK/objects/OxObjectInstantMessage.hpp"

namespace ox::convert {

// A dictionary without service gives an account without server.
std::shared_ptr<OxObjectInstantMessage> instantMessageFromStored(const Dictionary& stored);

// Empty without a user name; without a service entry when the server is missing or has no name.
std::shared_ptr<Dictionary> storedFromInstantMessage(const OxObjectInstantMessage& account);

}  // namespace ox::convert
