#pragma once

#include "ox/base/export.hpp"

namespace ox {

OX_EXPORT extern const double OxMacAddressBookSDKVersionNumber;
// A what-string: "@(#)PROGRAM:" to a line feed, so that it can be found in the binary.
OX_EXPORT extern const char* const OxMacAddressBookSDKVersionString;

}  // namespace ox
