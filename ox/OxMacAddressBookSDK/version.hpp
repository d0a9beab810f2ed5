#pragma once

namespace ox {

extern const double OxMacAddressBookSDKVersionNumber;
// A what-string: "@(#)PROGRAM:" to a line feed, so that it can be found in the binary.
extern const char* const OxMacAddressBookSDKVersionString;

}  // namespace ox
