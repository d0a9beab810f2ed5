#pragma once

#include <memory>

#include "fuzz/input.hpp"
#include "ox/OxAddressBookSDK/general/OxAddressBookGeneral.hpp"

namespace ox::fuzz {

// A neutral book as a host fills one, of the groups and persons that an input tells. Their values
// are of every kind, and some of them no file holds.
std::shared_ptr<OxAddressBookGeneral> makeBook(Input& input);

}  // namespace ox::fuzz
