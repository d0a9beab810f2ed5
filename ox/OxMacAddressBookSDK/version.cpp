#include "ox/OxMacAddressBookSDK/version.hpp"

namespace ox {

const double OxMacAddressBookSDKVersionNumber = 1.0;
const char* const OxMacAddressBookSDKVersionString =
    "@(#)PROGRAM:OxMacAddressBookSDK  PROJECT:" OX_PROJECT_NAME "-1\n";

}  // namespace ox
