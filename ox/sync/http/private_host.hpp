#pragma once

#include <string>

namespace ox::sync {

// Whether a host (as in a URL) is this machine or one of a private network, by its address or by
// the addresses that its name has now. A name that nobody knows is not. May wait for DNS.
bool isPrivateHost(const std::string& host);

}  // namespace ox::sync
