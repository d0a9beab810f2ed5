#pragma once

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"

namespace ox::convert {

// An address without country code gets the user's own. Entries that the model does not know are
// dropped.
std::shared_ptr<OxObjectAddress> addressFromStored(const Dictionary& stored);

// Only what is present.
std::shared_ptr<Dictionary> storedFromAddress(const OxObjectAddress& address);

}  // namespace ox::convert
