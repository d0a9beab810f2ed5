#pragma once

#include "ox/OxAddressBookSDK/objects/OxObjectAddress.hpp"

namespace ox::convert {

// An address without country code gets the user's own. Entries that the model does not know are
// dropped.
std::shared_ptr<OxObjectAddress> addressFromStored(const Dictionary& stored);

// Only what is present.
std::shared_ptr<Dictionary> storedFromAddress(const OxObjectAddress& address);

// The key that the store keeps an OxAddressField... under; empty for any other name.
std::string_view storedAddressKeyOf(std::string_view field);

}  // namespace ox::convert
