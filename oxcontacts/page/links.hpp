#pragma once

#include <string>

#include "ox/base/object.hpp"

namespace ox::program {

// Where a value leads when it is clicked on; empty where it leads nowhere. Only mailto: (RFC 6068),
// tel: (RFC 3966), http: and https: are given, whatever a contact holds.
std::string linkOf(const Object& value);

// A map of the place; empty for what is no address and for one without any part.
std::string mapLinkOf(const Object& value);

}  // namespace ox::program
