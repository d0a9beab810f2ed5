#pragma once

#include <string>

#include "ox/sync/dav/service_records.hpp"
#include "ox/sync/http/http_client.hpp"
#include "ox/sync/logins.hpp"

namespace ox::sync {

// Finds the address books that a login leads to (RFC 6764, RFC 6352, section 7): a URL with a path
// is asked itself, a host by its well-known address, an address by what DNS says of its domain.
// What lies on a host that is neither that of the login nor below it is not asked: the offer then
// names it, and nothing else, unless it is the confirmed one. Throws RemoteError: NoBook for what
// leads to no address book, Login, Usage for settings that name no place, and what the client
// throws.
Offer discover(HttpClient& client, const LoginSettings& settings, const std::string& confirmedHost,
               const Resolver& resolver = serviceRecords);

}  // namespace ox::sync
