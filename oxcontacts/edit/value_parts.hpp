#pragma once

#include <string_view>
#include <vector>

#include "ox/OxAddressBookSDK/properties/OxProperty.hpp"

namespace ox::program {

// The parts that a value of the property is typed by, in the order in which they are shown; none
// for a value that is one text.
std::vector<std::string_view> partNames(const OxProperty& property);
// The field of an address that a part stands for; empty for a name that is none.
std::string_view addressFieldOf(std::string_view part);

bool isMultiple(const OxProperty& property);
bool isName(const OxProperty& property);
// True when its entries are addresses.
bool holdsAddresses(const OxProperty& property);

}  // namespace ox::program
